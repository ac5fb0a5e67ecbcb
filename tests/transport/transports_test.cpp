#include "transport/transports.h"

#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>

#include "platform/base/error.h"
#include "support/kept_log/kept_log.h"
#include "support/library_fixture.h"
#include "transport/transport_names.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;

constexpr std::uint32_t kFallbackOpen = 1;

class TransportsTest : public LibraryTest {
 protected:
  Transports& transports = Transports::getInstance();
  ApplicationSettings settings;

  static std::string broken(const std::string& fault) {
    return std::string(QVN_BROKEN_MODULES) + "qvn_broken_" + fault + ".so";
  }
  static std::string text(const std::string& transport) { return "<Transport>" + transport + "</Transport>"; }

  // What a connection of the transport answers to being opened: the fallback's is 1.
  std::uint32_t openOf(const std::string& transport) {
    return transports.getConnectionManager(text(transport))
        .service->getConnection(text(transport), "bidi")
        ->doOpen();
  }
};

TEST_F(TransportsTest, WhatCannotBeLoadedSaysWhyAndIsReplacedByTheFallbacks) {
  const struct {
    const char* what;
    std::string module;
    std::uint32_t rc;
  } cases[] = {
      {"not registered", "", 0},
      {"missing", "/nowhere/module.so", 126},
      {"not a shared object", __FILE__, 193},
      {"without entry point", broken("no_entry"), 127},
      {"fails to initialise", broken("fails_to_initialize"), 31},
      {"null managers", broken("null_managers"), 0},
      {"throwing managers", broken("throws"), 0},
      {"another interface version", broken("other_abi"), 1306},
  };
  std::string name;
  std::string kind;
  EXPECT_EQ(transports.getTransportInfo(broken("bad_info"), name, kind), 1168u);
  platform::setLastError(31);
  fake.onCall = [](const char*) { return 77u; };
  EXPECT_EQ(transports.getTransportInfo(FakeTransport::module(), name, kind), 77u)
      << "its answer, for want of a reason";
  fake.onCall = nullptr;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    if (!c.module.empty()) {
      EXPECT_EQ(transports.getTransportInfo(c.module, name, kind), c.rc);
      settings.setString("Transports\\Network", "BAD", c.module, 0);
    }
    EXPECT_EQ(openOf("BAD"), kFallbackOpen);
    VisitorManager& visitors = *transports.getVisitorManager(text("BAD")).service;
    Visitor* const visitor = visitors.getVisitor("npaDataVisitor");
    EXPECT_EQ(visitor->getResult(), 1u);
    visitors.releaseVisitor(visitor);
    Discoverer& discoverer = *transports.getDiscoverer("BAD").service;
    std::uint32_t required = 0;
    EXPECT_EQ(discoverer.discover(""), 0u);
    EXPECT_EQ(discoverer.discoverSpecific(""), 0u);
    EXPECT_EQ(discoverer.getDefaults(nullptr, 0, &required), 1u);
    EXPECT_EQ(discoverer.setDefaults(""), 1u);
    transports.unload("BAD");
  }
}

TEST_F(TransportsTest, AddRegistersUnderTheKindThatTheModuleGives) {
  settings.deleteValue("Transports\\Network", "FAKE", 0);
  EXPECT_EQ(QvnAddTransport(FakeTransport::module()), 0u);
  EXPECT_THAT(transports.getTransportNames("NETWORK_TRANSPORT"), ElementsAre("FAKE"));
  EXPECT_THAT(fake.calls("install"), ElementsAre("install"));
  EXPECT_THAT(fake.calls("discover"), ElementsAre("discover")) << "an added transport is searched";
  EXPECT_EQ(QvnAddTransport(broken("other_kind").c_str()), 0u) << "another kind registers nothing";
  EXPECT_EQ(transports.addTransport(broken("no_abi")), 0u);
  EXPECT_THAT(transports.getTransportNames("ALL_TRANSPORT"), ElementsAre("BROKEN", "FAKE"));
  EXPECT_THAT(transports.getTransportNames("HBN3"), ElementsAre("HBN3"));
}

TEST(TransportNames, MatchWithoutCase) {
  const struct {
    const char* filter;
    const char* name;
    bool matches;
  } cases[] = {
      {"usb1", "USB1", true},
      {"all_transport", "X", true},
      {"LOCAL_TRANSPORT", "usb1", true},
      {"LOCAL_TRANSPORT", "PAR1", true},
      {"LOCAL_TRANSPORT", "IPv4", false},
      {"NETWORK_TRANSPORT", "hbn3", true},
      {"NETWORK_TRANSPORT", "HBN1", true},
      {"NETWORK_TRANSPORT", "ipV4", true},
      {"NETWORK_TRANSPORT", "USB1", false},
      {"NETWORK_TRANSPORT", "OTHER", false},
      {"USB1", "PAR1", false},
  };
  for (const auto& c : cases)
    EXPECT_EQ(transportMatches(c.filter, c.name), c.matches) << c.filter << " " << c.name;
}

TEST_F(TransportsTest, TheConnectionThatAllShareKeepsNothing) {
  Connectable& shared = *transports.getConnectionManager(text("NONE")).service->getConnection("", "bidi");
  for (const std::uint32_t index : {0u, 1u}) {
    EXPECT_TRUE(shared.setChild(index, &shared));
    EXPECT_EQ(shared.getChild(index), nullptr);
  }
  shared.setTag(1);
  shared.setLabel("label");
  EXPECT_EQ(shared.getTag(), 0u);
  EXPECT_EQ(shared.getLabel(), "");
}

class KeptTransportsTest : public KeptLog, public TransportsTest {
 protected:
  void openDevice(const std::string& transport) { gave("open of " + transport, openOf(transport)); }
};

TEST_F(KeptTransportsTest, ModulesAreLoadedAddedAndRemoved) {
  scene("a transport");
  openDevice("FAKE");
  openDevice("FAKE");
  transports.getVisitorManager(text("FAKE"));
  transports.getDiscoverer("FAKE");
  openDevice("NONE");
  transports.unload("FAKE");
  settings.setString("Transports\\Local", "FAKE", FakeTransport::module(), 0);
  settings.deleteValue("Transports\\Network", "FAKE", 0);
  const std::function<std::uint32_t()> failures[] = {
      []() -> std::uint32_t { throw std::runtime_error("discover"); }, [] { return 1460u; },
      []() -> std::uint32_t { throw 5; }};
  for (const auto& fails : failures) {
    fake.onCall = [&](const char* call) { return call == std::string("discover") ? fails() : 0u; };
    openDevice("FAKE");
    openDevice("FAKE");
    fake.onCall = nullptr;
    gave("discovery", QvnDiscovery(1, "LOCAL_TRANSPORT", ""));
    transports.unload("FAKE");
  }
  settings.deleteValue("Transports\\Local", "FAKE", 0);

  for (const char* const fault :
       {"no_entry", "fails_to_initialize", "null_managers", "throws", "other_abi"}) {
    scene(fault);
    settings.setString("Transports\\Network", "BAD", broken(fault), 0);
    openDevice("BAD");
    transports.getVisitorManager(text("BAD"));
    transports.getDiscoverer("BAD");
    transports.unload("BAD");
  }
  settings.deleteValue("Transports\\Network", "BAD", 0);

  scene("added and removed");
  gave("add", transports.addTransport(FakeTransport::module()));
  gave("install", transports.installTransport(FakeTransport::module()));
  gave("add", transports.addTransport("/nowhere/module.so"));
  gave("add", transports.addTransport(broken("bad_info")));
  settings.setString("Transports\\Network", "A", "/nowhere/module.so", 0);
  settings.setString("Transports\\Local", "B", broken("no_entry"), 0);
  fake.onCall = [](const char*) { return 77u; };
  gave("install all", transports.installRegisteredTransports());
  transports.uninstallRegisteredTransports();
  fake.onCall = nullptr;
  gave("remove", transports.removeTransport("A"));
  gave("remove", transports.removeTransport(FakeTransport::module()));
  openDevice("FAKE");
  const auto addAgain = [this] {
    settings.setString("Transports\\Network", "FAKE", FakeTransport::module(), 0);
  };
  addAgain();
  gave("remove what is not loaded", transports.removeTransport("FAKE"));
  openDevice("FAKE");
  addAgain();
  settings.deleteKey("Transports\\Local", 0);
  openDevice("FAKE");
  gave("remove with one kind registered", transports.removeTransport("FAKE"));
  openDevice("FAKE");

  expectKept("transport", "modules");
}

}  // namespace
}  // namespace qvn::test
