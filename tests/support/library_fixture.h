// The library initialised in the test's process, with the fake transport registered.
#pragma once

#include <gmock/gmock.h>

#include <string>

#include "common/settings/application_settings.h"
#include "qvn/qvn.h"
#include "support/fake_transport.h"

namespace qvn::test {

class LibraryTest : public testing::Test {
 protected:
  LibraryTest() {
    FakeTransport::registerModule();
    EXPECT_EQ(QvnInitialize(), 0u);
  }
  ~LibraryTest() override {
    EXPECT_EQ(QvnUninitialize(), 0u);
    fake.reset();
  }

  void set(const std::string& setting, std::uint32_t value) {
    ASSERT_TRUE(ApplicationSettings().setLong(setting_key::kSettings, setting, value, SettingsStore::kLocal));
  }

  // What every such call of the transport fails with from now on.
  void failCalls(const std::string& failing, std::uint32_t rc) {
    fake.onCall = [failing, rc](const char* call) { return call == failing ? rc : 0; };
  }

  FakeTransport& fake = FakeTransport::instance();
};

// Bytes written as numbers.
inline Data bytes(std::initializer_list<int> values) {
  Data data;
  for (const int value : values) {
    const auto byte = static_cast<std::uint8_t>(value);
    data.append(&byte, 1);
  }
  return data;
}

inline std::string asText(const Data& data) {
  return {reinterpret_cast<const char*>(data.getBuffer()), data.getLength()};
}

}  // namespace qvn::test
