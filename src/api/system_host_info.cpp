// What the exported host information functions forward to: facts about this host that print jobs carry.
#include <optional>

#include "api/output_buffer.h"
#include "api/system.h"
#include "common/settings/application_settings.h"
#include "common/settings/settings_store.h"
#include "platform/base/error.h"
#include "platform/process/system_information.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn {
namespace {

constexpr char kValueName[] = "HostInfo";
constexpr char kDefaultPin[] = "0000";
constexpr std::size_t kPcNameLength = 13;

std::string storedText() {
  std::string text;
  ApplicationSettings().getString(setting_key::kSettings, kValueName, text, SettingsStore::kShared);
  return text;
}

// A default has its size by its key, whatever the value: answers 122 when the buffer is smaller than that.
std::optional<std::uint32_t> refuseSmall(std::uint32_t size, std::uint32_t bufferSize,
                                         std::uint32_t& required) {
  required = size;
  if (bufferSize < size) return QRN_ERROR_INSUFFICIENT_BUFFER;
  return std::nullopt;
}

}  // namespace

std::uint32_t System::qvnSetHostInfo(const std::string& key, const std::string& value) {
  if (key != attribute::kPinNumber && key != attribute::kPcName && key != attribute::kCodePage) {
    return QRN_ERROR_INVALID_PARAMETER;
  }
  std::string text = storedText();
  const std::uint32_t rc = AttributeCodec::setString(text, key, value);
  if (rc != QRN_ERROR_SUCCESS) return rc;
  ApplicationSettings().setString(setting_key::kSettings, kValueName, text, SettingsStore::kShared);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t System::qvnGetHostInfo(const std::string& key, char* buffer, std::uint32_t bufferSize,
                                     std::uint32_t& required) {
  std::string value;
  if (AttributeCodec::getString(storedText(), key, value) == QRN_ERROR_SUCCESS) {
    return copyOutText(value, buffer, bufferSize, required);
  }
  if (key == attribute::kPcName) {
    if (const auto rc = refuseSmall(kPcNameLength + 1, bufferSize, required)) return *rc;
    const platform::ErrorCode error = platform::computerName(value);
    if (error != platform::kSuccess) {
      required = 0;
      return error;
    }
    value.resize(std::min(value.size(), kPcNameLength));
  } else if (key == attribute::kPinNumber) {
    if (const auto rc = refuseSmall(sizeof kDefaultPin, bufferSize, required)) return *rc;
    value = kDefaultPin;
  } else if (key == attribute::kCodePage) {
    if (const auto rc = refuseSmall(sizeof kDefaultPin, bufferSize, required)) return *rc;
    value = std::to_string(platform::ansiCodePage());
  } else {
    return QRN_ERROR_NOT_FOUND;
  }
  qvnSetHostInfo(key, value);
  std::uint32_t written = 0;
  return copyOutText(value, buffer, bufferSize, written);
}

}  // namespace qvn
