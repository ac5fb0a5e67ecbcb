// Documents to and from the scanner of a simulated BpdPrinter: replies, and what it makes of hostile hosts.
#include <gmock/gmock.h>

#include "support/simulator/object_host.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

class SimulatedDocuments : public testing::Test {
 protected:
  // A host gets what it asks for.
  void expectService() {
    ObjectHost next(device);
    next.observe("system", "systemUpdate");
  }

  SimulatorProcess device{{"--family", "BpdPrinter"}};
  ObjectHost host{device};
};

std::string observerDocument(const std::string& arguments, const std::string& method = "addObserver") {
  return "<?xml version=\"1.0\"?>\r\n<method name=\"" + method + "\" requestID=\"42\">\r\n  " + arguments +
         "\r\n</method>\r\n";
}

std::string argument(const std::string& name, const std::string& content) {
  return "<arg name=\"" + name + "\">" + content + "</arg>";
}

const std::string kArguments =
    argument("objName", "system") + argument("event", "systemUpdate") + argument("observer", "O");

std::string callDocument(const std::string& params) {
  return observerDocument(
      argument("objName", "jobFactory") + argument("method", "create") + argument("params", params),
      "callMethod");
}

TEST_F(SimulatedDocuments, AreAnsweredWithTheIdOfTheRequest) {
  host.send(observerDocument(kArguments));
  EXPECT_EQ(host.receive(), "response to 42 0");
  EXPECT_EQ(
      host.text(),
      "<?xml version=\"1.0\"?>\n<response requestID=\"42\">\n <IntegerElem>0</IntegerElem>\n</response>\n");
  host.send(callDocument(kNoParams));
  EXPECT_EQ(host.receive(), "exception to 42");
  EXPECT_EQ(host.text(),
            "<?xml version=\"1.0\"?>\n<exception requestID=\"42\">\n"
            " <message>create needs the kind of job and the scan parameters</message>\n</exception>\n");
}

TEST_F(SimulatedDocuments, AreAnsweredInAFrameOnRequest) {
  SimulatorProcess framing({"--family", "BpdPrinter", "--framed"});
  ObjectHost framed(framing);
  for (const char* lead : {"AA", "BB", "CC", "DD", "EE", "FF", "AA"}) {
    framed.observe("system", "systemUpdate");
    const Bytes& reply = framed.payload();
    EXPECT_EQ(
        toHex(Bytes(reply.begin(), reply.begin() + 8)),
        std::string(lead) + " 00 00 00 00 00 00 " + toHex({static_cast<std::uint8_t>(reply.size() - 8)}));
    EXPECT_THAT(framed.text().substr(8), StartsWith("<?xml"));
  }
  framed.call("system", "exitHostUSBSendMode");
  framed.receiveUntil("systemUpdate HostSend Exited");
  EXPECT_THAT(framed.text(), StartsWith("<?xml")) << "no frame around what is no reply";
  framed.call("nothing", "nothing");
  EXPECT_EQ(framed.receive(), "exception");
  EXPECT_EQ(framed.payload().front(), 0xCC);
  framing.command("fault misframe-reply=addObserver:1");
  framed.addObserver("system", "systemUpdate");
  framed.receive();
  EXPECT_EQ(framed.payload()[6], 1) << "256 too many";
  EXPECT_THAT(framed.receiveAll(), ElementsAre());
}

TEST_F(SimulatedDocuments, RefuseWhatHostsShouldNotSend) {
  struct Case {
    const char* name;
    std::string document;
  };
  const std::string kObject = argument("objName", "system");
  const std::string kEvent = argument("event", "systemUpdate");
  const std::string kDeclaration = "<?xml version=\"1.0\"?>";
  const auto observedBy = [&](const std::string& observer) {
    return observerDocument(kObject + kEvent + argument("observer", observer));
  };
  const auto methodWith = [&](const std::string& attributes) {
    return kDeclaration + "<method " + attributes + ">" + kArguments + "</method>";
  };
  const Case kWithId[] = {
      {"an unknown object", observerDocument(argument("objName", "x") + kEvent + argument("observer", "O"))},
      {"an unknown event", observerDocument(kObject + argument("event", "x") + argument("observer", "O"))},
      {"an argument too few", observerDocument(kObject + kEvent)},
      {"no arguments", observerDocument("")},
      {"an argument too many", observerDocument(kArguments + argument("observer", "P"))},
      {"arguments in another order", observerDocument(kEvent + kObject + argument("observer", "O"))},
      {"an argument within an argument", observedBy(kObject)},
      {"an element for a text", observedBy("<NullElem/>")},
      {"an empty text", observedBy("")},
      {"an argument without a name", observerDocument(kObject + kEvent + "<arg>O</arg>")},
      {"an argument with more than a name",
       observerDocument(kObject + kEvent + "<arg name=\"observer\" x=\"\">O</arg>")},
      {"text between the arguments", observerDocument(kArguments + "x")},
      {"a comment", observerDocument(kArguments + "<!-- -->")},
      {"raw text", observedBy("<![CDATA[O]]>")},
      {"no argument", observerDocument(kObject + kEvent + "<value name=\"observer\">O</value>")},
      {"an unknown method", observerDocument(kArguments, "getAttribute")},
      {"a text for an element", callDocument("x")},
      {"two elements", callDocument(std::string(kNoParams) + kNoParams)},
      {"no element of the tree", callDocument("<Element/>")},
      {"a map without children", callDocument("<MapElem><IntegerElem>1</IntegerElem></MapElem>")},
      {"a child without a name", callDocument("<MapElem><child><NullElem/></child></MapElem>")},
      {"a child without a value", callDocument("<MapElem><child name=\"a\"></child></MapElem>")},
      {"no integer", callDocument("<IntegerElem>12a</IntegerElem>")},
      {"no integer of 32 bits", callDocument("<IntegerElem>2147483648</IntegerElem>")},
      {"an integer with an attribute", callDocument("<IntegerElem x=\"1\">1</IntegerElem>")},
      {"parameters for a method without",
       observerDocument(argument("objName", "system") + argument("method", "exitHostUSBSendMode") +
                            argument("params", "<MapElem/>"),
                        "callMethod")},
  };
  for (const Case& c : kWithId) {
    host.send(c.document);
    EXPECT_EQ(host.receive(), "exception to 42") << c.name;
  }
  const auto nested = [](std::size_t depth) {
    std::string elements = "<NullElem/>";
    for (std::size_t i = 0; i < depth; ++i) elements = "<ListElem>" + elements + "</ListElem>";
    return elements;
  };
  host.send(callDocument(nested(40)));
  EXPECT_EQ(host.receive(), "exception to 42") << "deeper than any";
  const std::string valid = observerDocument(kArguments);
  const std::string body = valid.substr(valid.find("<method"));
  const Case kWithoutId[] = {
      {"nothing", ""},
      {"blanks", std::string(131072, ' ')},
      {"no XML", "start the scan"},
      {"a response", kDeclaration + "<response requestID=\"42\"><IntegerElem>0</IntegerElem></response>"},
      {"a notification", methodWith("name=\"event\"")},
      {"an id that is no number", methodWith("name=\"addObserver\" requestID=\"x\"")},
      {"an id that is too long", methodWith("name=\"addObserver\" requestID=\"123456789012\"")},
      {"an attribute too many", methodWith("name=\"addObserver\" requestID=\"42\" x=\"\"")},
      {"a declared entity", kDeclaration + "<!DOCTYPE method [<!ENTITY O \"O\">]>" + body},
      {"no UTF-8", observedBy("\xC3\x28")},
      {"elements within elements", callDocument(nested(400))},
      {"a document that is too long", valid + std::string(10001 - valid.size(), ' ')},
  };
  for (const Case& c : kWithoutId) {
    host.send(c.document);
    EXPECT_EQ(host.receive(), "exception to 0") << c.name;
  }
  host.send(observerDocument(kArguments));
  EXPECT_EQ(host.receive(), "response to 42 0");
}

TEST_F(SimulatedDocuments, AreRefusedWhenCutAnywhere) {
  const std::string whole = callDocument(createParameters(scanParameters({})));
  const std::size_t end = whole.rfind('>') + 1;
  for (std::size_t length = 0; length < end; ++length) {
    host.send(std::string_view(whole).substr(0, length));
    EXPECT_EQ(host.receive(), "exception to 0") << "cut at " << length;
  }
  // And the block that brings it, by the end of the connection.
  const Bytes block = blockOf(bytesOf(observerDocument(kArguments)));
  for (std::size_t length = 0; length < block.size(); ++length) {
    ObjectHost leaves(device);
    leaves.stream().send(Bytes(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(length)));
    leaves.stream().endSending();
    EXPECT_EQ(leaves.receive(), "ended") << length;
  }
  expectService();
}

TEST_F(SimulatedDocuments, MayComeInPieces) {
  for (const std::uint8_t byte : blockOf(bytesOf(observerDocument(kArguments)))) host.stream().send({byte});
  EXPECT_EQ(host.receive(), "response to 42 0");
}

TEST_F(SimulatedDocuments, EndTheConnectionWithAHeaderThatIsNone) {
  for (const char* header :
       {"42 4B 01 00 00 02 00 01", "42 4B 01 00 7F FF FF FF", "42 4B 02 00 00 00 00 04",
        "42 4B 01 01 00 00 00 00", "4B 42 01 00 00 00 00 00", "3C 3F 78 6D 6C 20 76 65"}) {
    ObjectHost strange(device);
    strange.stream().send(hex(header));
    EXPECT_EQ(strange.receive(), "ended") << header;
  }
  expectService();
}

TEST_F(SimulatedDocuments, AreObservedAsOftenAsAllowed) {
  for (int i = 0; i < 64; ++i) {
    host.observe("system", "systemUpdate", std::to_string(i));
  }
  host.addObserver("system", "systemUpdate", "one more");
  EXPECT_EQ(host.receive(), "exception");
  host.removeObserver("system", "systemUpdate", "0");
  host.removeObserver("HostSendJob_9", "stateChanged");
  host.addObserver("system", "systemUpdate", "another");
  EXPECT_THAT(host.receiveAll(), ElementsAre("response 0", "response 0", "response 0"));
}

TEST_F(SimulatedDocuments, MayBeAnyBlockOnCommand) {
  ObjectHost other(device);
  for (ObjectHost* each : {&host, &other}) {  // known to the device
    each->observe("system", "systemUpdate");
  }
  device.order("block 3C 4A 61 6D 3E");
  EXPECT_EQ(host.receive(), "<Jam>");
  EXPECT_EQ(other.receive(), "<Jam>");
  for (const char* bad : {"block", "block 0", "block x"}) {
    EXPECT_TRUE(device.command(bad).contains("error")) << bad;
  }
  EXPECT_TRUE(device.command("block " + std::string(std::size_t{2} * 131073, 'A')).contains("error"));
  SimulatorProcess cpd;
  EXPECT_TRUE(cpd.command("block 00").contains("error"));
}

TEST_F(SimulatedDocuments, EndAHostThatNeverReads) {
  ObjectHost deaf(device);
  deaf.observe("system", "systemUpdate");
  const std::string large = "block " + std::string(std::size_t{2} * 131072, 'A');
  for (int i = 0; i < 200; ++i) device.order(large);
  EXPECT_TRUE(deaf.stream().isEnded());
  expectService();
}

}  // namespace
}  // namespace qvn::test
