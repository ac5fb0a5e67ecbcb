// The typed values in an attribute text, the flat run of elements that describes a device:
// "<Device>CpdPrinter</Device><Handle>7</Handle>".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qvn {

// An attribute is named by a descriptor, "<Name>N</Name><Type>T</Type><Access>A</Access>" (attributes.h has
// all that the library defines). T is "Long", "String" or "ByteArray", A is "ReadOnly" or "Writeable".
//
// A Long is decimal text of an unsigned 32-bit value, a String its bytes unchanged, a ByteArray two
// upper-case hexadecimal digits a byte. A text is always written with its elements in the byte order of their
// names, each name once.
//
// Results: 0; 1168 the text has no such element; 1629 the descriptor is of another type than the operation;
// 122 a buffer is too small; 87 the value or the descriptor's name would be read back as something else (a
// String that contains the closing tag of its own element). A failed operation leaves text and out-values
// alone except where said. The codec keeps no state; any thread may use it.
class AttributeCodec {
 public:
  static bool isLong(std::string_view descriptor);
  static bool isString(std::string_view descriptor);
  static bool isByteArray(std::string_view descriptor);
  static bool isWriteable(std::string_view descriptor);

  static std::uint32_t getLong(std::string_view text, std::string_view descriptor, std::uint32_t& value);
  static std::uint32_t getString(std::string_view text, std::string_view descriptor, std::string& value);

  // `length` is set to 0 with 1629, and to the stored length with 122 and with 0.
  static std::uint32_t getByteArray(std::string_view text, std::string_view descriptor, std::uint8_t* buffer,
                                    std::uint32_t capacity, std::uint32_t& length);

  // The setters do not look at Access.
  static std::uint32_t setLong(std::string& text, std::string_view descriptor, std::uint32_t value);
  static std::uint32_t setString(std::string& text, std::string_view descriptor, std::string_view value);
  static std::uint32_t setByteArray(std::string& text, std::string_view descriptor, const std::uint8_t* bytes,
                                    std::uint32_t length);
};

}  // namespace qvn
