#include "qvn/transport/attribute_codec.h"

#include <array>
#include <charconv>
#include <cstdlib>

#include "kit/tag_map.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

constexpr std::string_view kLongType = "Long";
constexpr std::string_view kStringType = "String";
constexpr std::string_view kByteArrayType = "ByteArray";

std::string_view descriptorField(std::string_view descriptor, std::string_view field) {
  std::string_view value;
  return TagMap::find(descriptor, field, value) ? value : std::string_view();
}

bool hasType(std::string_view descriptor, std::string_view type) {
  return descriptorField(descriptor, "Type") == type;
}

// The common part of all reads: 1629, 1168 or 0 with the element's content.
std::uint32_t find(std::string_view text, std::string_view descriptor, std::string_view type,
                   std::string_view& content) {
  if (!hasType(descriptor, type)) return QRN_ERROR_DATATYPE_MISMATCH;
  if (!TagMap::find(text, descriptorField(descriptor, "Name"), content)) return QRN_ERROR_NOT_FOUND;
  return QRN_ERROR_SUCCESS;
}

std::uint32_t set(std::string& text, std::string_view descriptor, std::string_view type,
                  std::string_view content) {
  if (!hasType(descriptor, type)) return QRN_ERROR_DATATYPE_MISMATCH;
  TagMap elements(text);
  if (!elements.set(descriptorField(descriptor, "Name"), content)) return QRN_ERROR_INVALID_PARAMETER;
  text = elements.text();
  return QRN_ERROR_SUCCESS;
}

// Two characters as a byte, reading as far as they are hexadecimal digits.
std::uint8_t byteFromHex(std::string_view pair) {
  unsigned value = 0;
  std::from_chars(pair.data(), pair.data() + pair.size(), value, 16);
  return static_cast<std::uint8_t>(value);
}

}  // namespace

bool AttributeCodec::isLong(std::string_view descriptor) { return hasType(descriptor, kLongType); }
bool AttributeCodec::isString(std::string_view descriptor) { return hasType(descriptor, kStringType); }
bool AttributeCodec::isByteArray(std::string_view descriptor) { return hasType(descriptor, kByteArrayType); }
bool AttributeCodec::isWriteable(std::string_view descriptor) {
  return descriptorField(descriptor, "Access") == "Writeable";
}

std::uint32_t AttributeCodec::getLong(std::string_view text, std::string_view descriptor,
                                      std::uint32_t& value) {
  std::string_view content;
  const std::uint32_t rc = find(text, descriptor, kLongType, content);
  if (rc == QRN_ERROR_SUCCESS) value = static_cast<std::uint32_t>(std::atol(std::string(content).c_str()));
  return rc;
}

std::uint32_t AttributeCodec::getString(std::string_view text, std::string_view descriptor,
                                        std::string& value) {
  std::string_view content;
  const std::uint32_t rc = find(text, descriptor, kStringType, content);
  if (rc == QRN_ERROR_SUCCESS) value = content;
  return rc;
}

std::uint32_t AttributeCodec::getByteArray(std::string_view text, std::string_view descriptor,
                                           std::uint8_t* buffer, std::uint32_t capacity,
                                           std::uint32_t& length) {
  std::string_view content;
  const std::uint32_t rc = find(text, descriptor, kByteArrayType, content);
  if (rc == QRN_ERROR_DATATYPE_MISMATCH) length = 0;
  if (rc != QRN_ERROR_SUCCESS) return rc;
  const auto stored = static_cast<std::uint32_t>(content.size() / 2);
  length = stored;
  if (capacity < stored) return QRN_ERROR_INSUFFICIENT_BUFFER;
  for (std::uint32_t i = 0; i < stored; ++i) buffer[i] = byteFromHex(content.substr(2 * std::size_t{i}, 2));
  return QRN_ERROR_SUCCESS;
}

std::uint32_t AttributeCodec::setLong(std::string& text, std::string_view descriptor, std::uint32_t value) {
  return set(text, descriptor, kLongType, std::to_string(value));
}

std::uint32_t AttributeCodec::setString(std::string& text, std::string_view descriptor,
                                        std::string_view value) {
  return set(text, descriptor, kStringType, value);
}

std::uint32_t AttributeCodec::setByteArray(std::string& text, std::string_view descriptor,
                                           const std::uint8_t* bytes, std::uint32_t length) {
  constexpr std::array<char, 17> kDigits{"0123456789ABCDEF"};
  std::string content;
  content.reserve(2 * std::size_t{length});
  for (std::uint32_t i = 0; i < length; ++i) {
    content.push_back(kDigits[bytes[i] >> 4]);
    content.push_back(kDigits[bytes[i] & 0x0F]);
  }
  return set(text, descriptor, kByteArrayType, content);
}

}  // namespace qvn
