// Attribute texts of any kind: reading them, and reading back what was set in them.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "device/device_identity.h"
#include "fuzz/check.h"
#include "kit/tag_map.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace {

using namespace qvn;

constexpr std::array kLongs = {attribute::kHandle, attribute::kTrueEndOfJob, attribute::kVid};
constexpr std::array kStrings = {attribute::kPortname, attribute::kAddress, attribute::kPrinterModel};
constexpr std::array kByteArrays = {attribute::kMacAddress, attribute::kNpaRevisionLevel};

std::string nameOf(std::string_view descriptor) {
  std::string_view name;
  TagMap::find(descriptor, "Name", name);
  return std::string(name);
}

void readAll(const std::string& text) {
  std::uint32_t number = 0;
  std::string string;
  std::array<std::uint8_t, 64> bytes;
  std::uint32_t length = 0;
  for (const char* const descriptor : kLongs) AttributeCodec::getLong(text, descriptor, number);
  for (const char* const descriptor : kStrings) AttributeCodec::getString(text, descriptor, string);
  for (const char* const descriptor : kByteArrays) {
    const std::uint32_t rc =
        AttributeCodec::getByteArray(text, descriptor, bytes.data(), bytes.size(), length);
    if (rc == QRN_ERROR_SUCCESS) QVN_FUZZ_CHECK(length <= bytes.size());
    if (rc == QRN_ERROR_INSUFFICIENT_BUFFER) QVN_FUZZ_CHECK(length > bytes.size());
  }
}

// The one look-up and the map agree, and the first of two elements with one name counts in both.
void compareReaders(const std::string& text, const std::string& name) {
  const TagMap map(text);
  const std::string* const inMap = map.find(name);
  std::string_view direct;
  const bool found = TagMap::find(text, name, direct);
  QVN_FUZZ_CHECK(found == (inMap != nullptr));
  if (found) QVN_FUZZ_CHECK(direct == *inMap);
}

// A value must not hold the end of its own element.
bool isStorable(const std::string& value, const std::string& name) {
  return value.find("</" + name + ">") == std::string::npos;
}

void setAndReadBack(FuzzedDataProvider& input, std::string& text) {
  const auto number = input.ConsumeIntegral<std::uint32_t>();
  const char* const longKey = input.PickValueInArray(kLongs);
  const char* const stringKey = input.PickValueInArray(kStrings);
  const char* const bytesKey = input.PickValueInArray(kByteArrays);
  const std::string string = input.ConsumeRandomLengthString(64);
  const std::vector<std::uint8_t> bytes =
      input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, 32));

  QVN_FUZZ_CHECK(AttributeCodec::setLong(text, longKey, number) == QRN_ERROR_SUCCESS);
  std::uint32_t longBack = 0;
  QVN_FUZZ_CHECK(AttributeCodec::getLong(text, longKey, longBack) == QRN_ERROR_SUCCESS && longBack == number);

  const auto length = static_cast<std::uint32_t>(bytes.size());
  QVN_FUZZ_CHECK(AttributeCodec::setByteArray(text, bytesKey, bytes.data(), length) == QRN_ERROR_SUCCESS);
  std::array<std::uint8_t, 32> bytesBack;
  std::uint32_t lengthBack = 0;
  QVN_FUZZ_CHECK(AttributeCodec::getByteArray(text, bytesKey, bytesBack.data(), bytesBack.size(),
                                              lengthBack) == QRN_ERROR_SUCCESS);
  QVN_FUZZ_CHECK(lengthBack == length && std::equal(bytes.begin(), bytes.end(), bytesBack.begin()));

  const bool isStored = AttributeCodec::setString(text, stringKey, string) == QRN_ERROR_SUCCESS;
  QVN_FUZZ_CHECK(isStored == isStorable(string, nameOf(stringKey)));
  if (!isStored) return;
  std::string stringBack;
  QVN_FUZZ_CHECK(AttributeCodec::getString(text, stringKey, stringBack) == QRN_ERROR_SUCCESS);
  QVN_FUZZ_CHECK(stringBack == string);
}

// What one pass finds is what the codec finds.
void compareIdentity(const std::string& text) {
  const DeviceIdentity identity = DeviceIdentity::of(text);
  std::uint32_t handle = 0;
  std::string transport;
  QVN_FUZZ_CHECK(identity.handle.has_value() ==
                 (AttributeCodec::getLong(text, attribute::kHandle, handle) == QRN_ERROR_SUCCESS));
  QVN_FUZZ_CHECK(identity.transport.has_value() ==
                 (AttributeCodec::getString(text, attribute::kTransport, transport) == QRN_ERROR_SUCCESS));
  QVN_FUZZ_CHECK(identity.handle.value_or(0) == handle && identity.transport.value_or("") == transport);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider input(bytes, size);
  const std::string name = input.ConsumeRandomLengthString(16);
  std::string added;
  setAndReadBack(input, added);
  // The library's own texts come back as they are.
  QVN_FUZZ_CHECK(TagMap(added).text() == added);

  std::string text = input.ConsumeRemainingBytesAsString();
  readAll(text);
  compareReaders(text, name);
  compareIdentity(text);
  const std::string written = TagMap(text).text();
  QVN_FUZZ_CHECK(TagMap(written).text() == written);
  FuzzedDataProvider again(bytes, size);
  setAndReadBack(again, text);
  return 0;
}
