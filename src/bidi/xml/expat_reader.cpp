#include "bidi/xml/expat_reader.h"

#include <expat.h>

#include <limits>
#include <new>

namespace qvn {

// What Expat calls. An exception must not pass through it: it is kept until the parser has stopped.
struct ExpatReader::Handlers {
  template <typename Work>
  static void run(void* userData, Work work) {
    auto& reader = *static_cast<ExpatReader*>(userData);
    // Expat may deliver an event or two after it was told to stop.
    if (reader.stopped_) return;
    try {
      work(reader);
    } catch (...) {
      reader.failure_ = std::current_exception();
      reader.stop();
    }
  }

  static void XMLCALL start(void* userData, const XML_Char* name, const XML_Char** attributes) {
    run(userData, [&](ExpatReader& reader) { reader.startTag(name, attributes); });
  }
  static void XMLCALL end(void* userData, const XML_Char* /*name*/) {
    run(userData, [](ExpatReader& reader) { reader.endTag(); });
  }
  static void XMLCALL text(void* userData, const XML_Char* text, int length) {
    run(userData, [&](ExpatReader& reader) { reader.addText({text, static_cast<std::size_t>(length)}); });
  }
  static void XMLCALL entityDeclaration(void* userData, const XML_Char*, int, const XML_Char*, int,
                                        const XML_Char*, const XML_Char*, const XML_Char*, const XML_Char*) {
    run(userData, [](ExpatReader& reader) { reader.stop(); });
  }
  static void XMLCALL attributeDeclaration(void* userData, const XML_Char*, const XML_Char*, const XML_Char*,
                                           const XML_Char*, int) {
    run(userData, [](ExpatReader& reader) { reader.stop(); });
  }
};

ExpatReader::ExpatReader() : parser_(XML_ParserCreate(nullptr), &XML_ParserFree) {
  if (parser_ == nullptr) throw std::bad_alloc();
  XML_SetUserData(parser_.get(), this);
  XML_SetElementHandler(parser_.get(), &Handlers::start, &Handlers::end);
  XML_SetCharacterDataHandler(parser_.get(), &Handlers::text);
  XML_SetEntityDeclHandler(parser_.get(), &Handlers::entityDeclaration);
  XML_SetAttlistDeclHandler(parser_.get(), &Handlers::attributeDeclaration);
}

ExpatReader::~ExpatReader() = default;

bool ExpatReader::read(std::string_view document, Extent extent) {
  // Expat takes lengths as int.
  if (document.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) return false;
  const auto status = XML_Parse(parser_.get(), document.data(), static_cast<int>(document.size()),
                                extent == Extent::Whole ? XML_TRUE : XML_FALSE);
  if (failure_ != nullptr) std::rethrow_exception(failure_);
  return status == XML_STATUS_OK;
}

void ExpatReader::stop() {
  stopped_ = true;
  XML_StopParser(parser_.get(), XML_FALSE);
}

}  // namespace qvn
