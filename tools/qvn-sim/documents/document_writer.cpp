#include "documents/document_writer.h"

#include <libxml/xmlwriter.h>

#include <memory>

namespace sim {
namespace {

const xmlChar* xml(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

// Without an encoding in its declaration: hosts look for the end of that among the first 32 bytes.
class Writer {
 public:
  Writer() : buffer_(xmlBufferCreate()), writer_(xmlNewTextWriterMemory(buffer_.get(), 0)) {
    xmlTextWriterSetIndent(writer_.get(), 1);
    xmlTextWriterStartDocument(writer_.get(), nullptr, nullptr, nullptr);
  }

  void open(const char* tag) { xmlTextWriterStartElement(writer_.get(), xml(tag)); }
  void open(const char* tag, const char* attribute, const std::string& value) {
    open(tag);
    xmlTextWriterWriteAttribute(writer_.get(), xml(attribute), xml(value.c_str()));
  }
  void close() { xmlTextWriterEndElement(writer_.get()); }
  void text(const std::string& text) { xmlTextWriterWriteString(writer_.get(), xml(text.c_str())); }

  void argument(const char* name, const std::string& value) {
    open("arg", "name", name);
    text(value);
    close();
  }

  void element(const Element& element) {
    open(kElementTags[static_cast<std::size_t>(element.kind)].data());
    for (const Element& child : element.children) {
      const bool isNamed = element.kind == Element::Kind::Map;
      if (isNamed) open("child", "name", child.name);
      this->element(child);
      if (isNamed) close();
    }
    if (!element.text.empty()) text(element.text);
    close();
  }

  // The whole document, with all that is open closed.
  std::string finish() {
    xmlTextWriterEndDocument(writer_.get());
    xmlTextWriterFlush(writer_.get());
    return std::string(reinterpret_cast<const char*>(xmlBufferContent(buffer_.get())),
                       static_cast<std::size_t>(xmlBufferLength(buffer_.get())));
  }

 private:
  struct Free {
    void operator()(xmlBuffer* buffer) const { xmlBufferFree(buffer); }
    void operator()(xmlTextWriter* writer) const { xmlFreeTextWriter(writer); }
  };

  std::unique_ptr<xmlBuffer, Free> buffer_;
  std::unique_ptr<xmlTextWriter, Free> writer_;
};

}  // namespace

std::string responseDocument(const std::string& requestId, const Element& result) {
  Writer writer;
  writer.open("response", "requestID", requestId);
  writer.element(result);
  return writer.finish();
}

std::string exceptionDocument(const std::string& requestId, const std::string& message) {
  Writer writer;
  writer.open("exception", "requestID", requestId);
  writer.open("message");
  writer.text(message);
  return writer.finish();
}

std::string notificationDocument(const Notification& notification) {
  Writer writer;
  writer.open("method", "name", "event");
  writer.argument("observer", notification.observer);
  writer.argument("objName", notification.object);
  writer.argument("event", notification.event);
  writer.open("arg", "name", "data");
  writer.element(notification.data);
  return writer.finish();
}

}  // namespace sim
