// Values of an object store as JSON, and back.
//
//   object  MapElem       whole number   IntegerElem     true, false        BooleanElem
//   array   ListElem      other number   DoubleElem      null               NullElem
//   text    StringElem                                   {"base64": "..."}  BinaryElem
#pragma once

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "bidi/element/element.h"

namespace qvn::object_store {

using Json = nlohmann::ordered_json;

// Throw std::invalid_argument for what no document can hold: a number above 32 bits, a text that is not
// plain, a member's name that also has a quote or a line break in it, is too long or begins with "_" (such
// members are not sent), base64 that is none; the first also for what is no JSON, or nested deeper than
// anybody writes it.
std::unique_ptr<Element> parseElement(const std::string& text);
std::unique_ptr<Element> toElement(const Json& value);

// Throws std::invalid_argument for a text that may not stand in a document: one with markup, characters that
// XML does not have, or bytes that are no UTF-8.
const std::string& requirePlain(const std::string& text);

Json toJson(const Element& element);

}  // namespace qvn::object_store
