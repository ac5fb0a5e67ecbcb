// Reads of attributes from the stored text of a device, as the exported functions answer them.
#pragma once

#include <cstdint>
#include <string>

#include "api/output_buffer.h"
#include "api/wide_text.h"
#include "qvn/transport/attribute_codec.h"

namespace qvn {

// The store's code when nothing is stored under the handle, the codec's otherwise, 122 for a small buffer.
template <typename Store>
std::uint32_t getStoredLong(std::uint32_t handle, const char* key, std::uint32_t& value) {
  value = 0;
  std::string text;
  const std::uint32_t rc = Store::getInstance().read(handle, text);
  return rc != QRN_ERROR_SUCCESS ? rc : AttributeCodec::getLong(text, key, value);
}

template <typename Store>
std::uint32_t getStoredString(std::uint32_t handle, const char* key, std::string& value) {
  std::string text;
  const std::uint32_t rc = Store::getInstance().read(handle, text);
  return rc != QRN_ERROR_SUCCESS ? rc : AttributeCodec::getString(text, key, value);
}

template <typename Store>
std::uint32_t getStoredString(std::uint32_t handle, const char* key, char* buffer, std::uint32_t bufferSize,
                              std::uint32_t& required) {
  required = 0;
  buffer[0] = '\0';
  std::string value;
  const std::uint32_t rc = getStoredString<Store>(handle, key, value);
  return rc != QRN_ERROR_SUCCESS ? rc : copyOutText(value, buffer, bufferSize, required);
}

template <typename Store>
std::uint32_t getStoredWideString(std::uint32_t handle, const char* key, std::uint8_t* buffer,
                                  std::uint32_t bufferSize, std::uint32_t& required) {
  required = 0;
  std::fill_n(buffer, bufferSize, std::uint8_t{0});
  std::string value;
  const std::uint32_t rc = getStoredString<Store>(handle, key, value);
  if (rc != QRN_ERROR_SUCCESS) return rc;
  const std::u16string wide = toWideText(value);
  return copyOut(wide.c_str(), (wide.size() + 1) * sizeof(char16_t), buffer, bufferSize, required);
}

template <typename Store>
std::uint32_t getStoredByteArray(std::uint32_t handle, const char* key, std::uint8_t* buffer,
                                 std::uint32_t bufferSize, std::uint32_t& required) {
  required = 0;
  std::string text;
  const std::uint32_t rc = Store::getInstance().read(handle, text);
  return rc != QRN_ERROR_SUCCESS ? rc : AttributeCodec::getByteArray(text, key, buffer, bufferSize, required);
}

}  // namespace qvn
