// ExpatReader: reads one XML document with Expat and hands its tags and texts to the class derived from it.
#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <string_view>

struct XML_ParserStruct;

namespace qvn {

class ExpatReader {
 public:
  ExpatReader();
  ExpatReader(const ExpatReader&) = delete;
  ExpatReader& operator=(const ExpatReader&) = delete;
  virtual ~ExpatReader();

 protected:
  enum class Extent { Whole, Beginning };

  // False for what is not well-formed, is in an encoding that Expat does not know by itself (it knows UTF-8,
  // which nothing needs to declare, UTF-16, ISO-8859-1 and US-ASCII), or declares entities or attributes: a
  // few declarations can stand for gigabytes, and no device sends any. The five entities of XML and
  // references to characters are read. The beginning of a document may end anywhere. Throws what one of the
  // operations below throws. Called once.
  bool read(std::string_view document, Extent extent);

  // `attributes` are pairs of a name and a value, ended by null.
  virtual void startTag(const char* name, const char** attributes) = 0;
  virtual void endTag() = 0;
  // In UTF-8. Comes in pieces. There is a tag open whenever there is text.
  virtual void addText(std::string_view text) = 0;

 private:
  struct Handlers;

  void stop();

  std::unique_ptr<XML_ParserStruct, void (*)(XML_ParserStruct*)> parser_;
  std::exception_ptr failure_;
  bool stopped_ = false;
};

}  // namespace qvn
