// Descriptors of any kind: the tests of type and access, and reads and writes under them.
#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <string>

#include "fuzz/check.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"

using qvn::AttributeCodec;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider input(bytes, size);
  std::string text = input.ConsumeRandomLengthString(128);
  const std::string descriptor = input.ConsumeRemainingBytesAsString();

  AttributeCodec::isWriteable(descriptor);
  const int types = AttributeCodec::isLong(descriptor) + AttributeCodec::isString(descriptor) +
                    AttributeCodec::isByteArray(descriptor);
  QVN_FUZZ_CHECK(types <= 1);

  std::uint32_t number = 0;
  std::string string;
  std::array<std::uint8_t, 16> array{};
  std::uint32_t length = 0;
  const bool isLong = AttributeCodec::isLong(descriptor);
  const bool isString = AttributeCodec::isString(descriptor);
  const bool isByteArray = AttributeCodec::isByteArray(descriptor);
  QVN_FUZZ_CHECK(isLong || AttributeCodec::getLong(text, descriptor, number) == QRN_ERROR_DATATYPE_MISMATCH);
  QVN_FUZZ_CHECK(isString ||
                 AttributeCodec::getString(text, descriptor, string) == QRN_ERROR_DATATYPE_MISMATCH);
  QVN_FUZZ_CHECK(isByteArray || AttributeCodec::getByteArray(text, descriptor, array.data(), array.size(),
                                                             length) == QRN_ERROR_DATATYPE_MISMATCH);
  // A refused write leaves the text as it is.
  const std::string before = text;
  if (AttributeCodec::setLong(text, descriptor, 7) != 0) QVN_FUZZ_CHECK(text == before);
  AttributeCodec::setString(text, descriptor, "value");
  AttributeCodec::setByteArray(text, descriptor, array.data(), static_cast<std::uint32_t>(array.size()));
  return 0;
}
