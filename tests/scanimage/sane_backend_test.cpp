// The backend as a program loads it: what scanimage does not do with one.
#include <dlfcn.h>
#include <poll.h>
#include <sane/sane.h>

#include <cstring>
#include <thread>

#include "end_to_end/scan/scan_station.h"

namespace qvn::test {
namespace {

std::size_t threads() {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) ++count;
  return count;
}

class SaneBackend : public ScanStation, public testing::WithParamInterface<const char*> {
 protected:
  SaneBackend() : ScanStation(GetParam()) {}

  void load() {
    module_ = dlopen(QVN_SANE_BACKEND, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module_, nullptr) << dlerror();
    SANE_Int version = 0;
    ASSERT_EQ(function<decltype(sane_init)>("init")(&version, nullptr), SANE_STATUS_GOOD);
    EXPECT_EQ(SANE_VERSION_MAJOR(version), SANE_CURRENT_MAJOR);
  }
  void unload() {
    function<decltype(sane_exit)>("exit")();
    EXPECT_EQ(dlclose(module_), 0);
    module_ = nullptr;
  }
  void TearDown() override {
    if (module_ != nullptr) unload();
    ScanStation::TearDown();
  }

  template <typename Function>
  Function* function(const char* name) {
    void* const found = dlsym(module_, (std::string("sane_qvn_") + name).c_str());
    EXPECT_NE(found, nullptr) << name;
    EXPECT_EQ(dlsym(module_, (std::string("sane_") + name).c_str()), found) << name;
    return reinterpret_cast<Function*>(found);
  }

  SANE_Handle open(const char* name = "") {
    SANE_Handle handle = nullptr;
    EXPECT_EQ(function<decltype(sane_open)>("open")(name, &handle), SANE_STATUS_GOOD);
    return handle;
  }
  // With the settings that make a page of the picture on the glass.
  SANE_Handle openForGlass() {
    const SANE_Handle handle = open();
    EXPECT_EQ(set(handle, "resolution", 100), SANE_STATUS_GOOD);
    EXPECT_EQ(set(handle, "mode", "Color"), SANE_STATUS_GOOD);
    return handle;
  }
  void close(SANE_Handle handle) { function<decltype(sane_close)>("close")(handle); }
  SANE_Status start(SANE_Handle handle) { return function<decltype(sane_start)>("start")(handle); }
  SANE_Status read(SANE_Handle handle, SANE_Byte* data, SANE_Int size, SANE_Int* length) {
    return function<decltype(sane_read)>("read")(handle, data, size, length);
  }
  void cancel(SANE_Handle handle) { function<decltype(sane_cancel)>("cancel")(handle); }
  SANE_Status setNonBlocking(SANE_Handle handle, SANE_Bool wanted) {
    return function<decltype(sane_set_io_mode)>("set_io_mode")(handle, wanted);
  }
  SANE_Status selectDescriptor(SANE_Handle handle, SANE_Int* descriptor) {
    return function<decltype(sane_get_select_fd)>("get_select_fd")(handle, descriptor);
  }
  SANE_Status control(SANE_Handle handle, SANE_Int option, SANE_Action action, void* value, SANE_Int* info) {
    return function<decltype(sane_control_option)>("control_option")(handle, option, action, value, info);
  }
  SANE_Parameters parameters(SANE_Handle handle) {
    SANE_Parameters parameters = {};
    EXPECT_EQ(function<decltype(sane_get_parameters)>("get_parameters")(handle, &parameters),
              SANE_STATUS_GOOD);
    return parameters;
  }

  // The number of the option with that name.
  SANE_Int option(SANE_Handle handle, const char* name) {
    const auto describe = function<decltype(sane_get_option_descriptor)>("get_option_descriptor");
    for (SANE_Int number = 0;; ++number) {
      const SANE_Option_Descriptor* const found = describe(handle, number);
      if (found == nullptr) break;
      if (std::strcmp(found->name, name) == 0 && found->type != SANE_TYPE_GROUP) return number;
    }
    ADD_FAILURE() << "no option " << name;
    return -1;
  }
  SANE_Status set(SANE_Handle handle, const char* name, SANE_Word value, SANE_Int* info = nullptr) {
    return control(handle, option(handle, name), SANE_ACTION_SET_VALUE, &value, info);
  }
  SANE_Status set(SANE_Handle handle, const char* name, std::string value) {
    return control(handle, option(handle, name), SANE_ACTION_SET_VALUE, value.data(), nullptr);
  }
  SANE_Word word(SANE_Handle handle, const char* name) {
    SANE_Word value = 0;
    EXPECT_EQ(control(handle, option(handle, name), SANE_ACTION_GET_VALUE, &value, nullptr),
              SANE_STATUS_GOOD);
    return value;
  }

  // Reads to the page's end; the result is what ended it.
  SANE_Status readAll(SANE_Handle handle, std::vector<SANE_Byte>& all) {
    std::vector<SANE_Byte> buffer(10000);
    for (;;) {
      SANE_Int length = 0;
      const SANE_Status status = read(handle, buffer.data(), 10000, &length);
      if (status != SANE_STATUS_GOOD) return status;
      all.insert(all.end(), buffer.begin(), buffer.begin() + length);
    }
  }

 private:
  void* module_ = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Families, SaneBackend, testing::Values(kCpd, kBpd), familyName);

TEST_P(SaneBackend, OptionsKeepToWhatTheScannerHas) {
  ScanStation::start();
  load();
  const SANE_Handle handle = open("IP_SIM0000001");
  EXPECT_EQ(word(handle, ""), 10);
  EXPECT_EQ(set(handle, "", 3), SANE_STATUS_INVAL);
  SANE_Int info = 0;
  EXPECT_EQ(set(handle, "resolution", 100, &info), SANE_STATUS_GOOD);
  EXPECT_EQ(info, SANE_INFO_RELOAD_PARAMS);
  EXPECT_EQ(set(handle, "resolution", 590, &info), SANE_STATUS_GOOD);
  EXPECT_EQ(info, SANE_INFO_RELOAD_PARAMS | SANE_INFO_INEXACT);
  EXPECT_EQ(word(handle, "resolution"), 600);
  EXPECT_EQ(set(handle, "br-x", SANE_FIX(400), &info), SANE_STATUS_GOOD);
  EXPECT_EQ(word(handle, "br-x"), SANE_FIX(215.9));
  EXPECT_EQ(set(handle, "mode", "Sepia"), SANE_STATUS_INVAL);
  EXPECT_EQ(set(handle, "source", "Drawer"), SANE_STATUS_INVAL);
  SANE_Word value = 0;
  EXPECT_EQ(control(handle, 99, SANE_ACTION_GET_VALUE, &value, nullptr), SANE_STATUS_INVAL);
  EXPECT_EQ(control(handle, -1, SANE_ACTION_GET_VALUE, &value, nullptr), SANE_STATUS_INVAL);

  // Parameters follow the options, with the corners in any order.
  EXPECT_EQ(set(handle, "mode", "Lineart"), SANE_STATUS_GOOD);
  EXPECT_EQ(set(handle, "resolution", 300), SANE_STATUS_GOOD);
  EXPECT_EQ(set(handle, "br-x", SANE_FIX(10)), SANE_STATUS_GOOD);
  EXPECT_EQ(set(handle, "tl-x", SANE_FIX(35.4)), SANE_STATUS_GOOD);
  SANE_Parameters frame = parameters(handle);
  EXPECT_EQ(frame.format, SANE_FRAME_GRAY);
  EXPECT_EQ(frame.depth, 1);
  EXPECT_EQ(frame.pixels_per_line, 300);
  EXPECT_EQ(frame.bytes_per_line, 38);
  EXPECT_EQ(frame.lines, 3510);
  EXPECT_EQ(set(handle, "mode", "Color"), SANE_STATUS_GOOD);
  frame = parameters(handle);
  EXPECT_EQ(frame.format, SANE_FRAME_RGB);
  EXPECT_EQ(frame.bytes_per_line, 900);
  close(handle);
}

TEST_P(SaneBackend, ReadsWithoutBlockingAndTellsWhenThereIsSomething) {
  ScanStation::start({"--fault", "slow-scan=4000000"});
  load();
  const SANE_Handle handle = openForGlass();
  SANE_Int descriptor = -1;
  EXPECT_EQ(setNonBlocking(handle, SANE_TRUE), SANE_STATUS_INVAL);
  EXPECT_EQ(selectDescriptor(handle, &descriptor), SANE_STATUS_INVAL);
  ASSERT_EQ(start(handle), SANE_STATUS_GOOD);
  EXPECT_EQ(start(handle), SANE_STATUS_DEVICE_BUSY);
  EXPECT_EQ(set(handle, "resolution", 200), SANE_STATUS_DEVICE_BUSY);
  ASSERT_EQ(setNonBlocking(handle, SANE_TRUE), SANE_STATUS_GOOD);
  ASSERT_EQ(selectDescriptor(handle, &descriptor), SANE_STATUS_GOOD);
  Picture picture{850, 1170, {}};
  SANE_Status status = SANE_STATUS_GOOD;
  int empty = 0;
  while (status == SANE_STATUS_GOOD) {
    SANE_Byte buffer[50000];
    SANE_Int length = 0;
    status = read(handle, buffer, sizeof buffer, &length);
    picture.rgb.insert(picture.rgb.end(), buffer, buffer + length);
    if (status == SANE_STATUS_GOOD && length == 0) {
      ++empty;
      pollfd ready = {descriptor, POLLIN, 0};
      ASSERT_EQ(poll(&ready, 1, 30000), 1);
    }
  }
  EXPECT_EQ(status, SANE_STATUS_EOF);
  EXPECT_GT(empty, 0);
  EXPECT_SAME_PICTURE(picture, glass());
  SANE_Byte none = 0;
  SANE_Int length = 1;
  EXPECT_EQ(read(handle, &none, 1, &length), SANE_STATUS_EOF);
  EXPECT_EQ(length, 0);
  close(handle);
}

TEST_P(SaneBackend, IsCancelledFromAnotherThreadAndScansAgain) {
  ScanStation::start({"--fault", "stop-page=200000:2"});
  load();
  const SANE_Handle handle = openForGlass();
  ASSERT_EQ(start(handle), SANE_STATUS_GOOD);
  std::vector<SANE_Byte> page;
  std::thread canceller([&] { cancel(handle); });
  EXPECT_EQ(readAll(handle, page), SANE_STATUS_CANCELLED);
  canceller.join();
  SANE_Byte none = 0;
  SANE_Int length = 0;
  EXPECT_EQ(read(handle, &none, 1, &length), SANE_STATUS_CANCELLED);

  // A program that does not read on after it has cancelled.
  ASSERT_EQ(start(handle), SANE_STATUS_GOOD);
  cancel(handle);
  ASSERT_EQ(start(handle), SANE_STATUS_GOOD);
  Picture picture{850, 1170, {}};
  EXPECT_EQ(readAll(handle, picture.rgb), SANE_STATUS_EOF);
  EXPECT_SAME_PICTURE(picture, glass());
  cancel(handle);
  close(handle);
}

TEST_P(SaneBackend, LeavesTheScannerToOthersBetweenPages) {
  ScanStation::start();
  load();
  const SANE_Handle handle = open();
  EXPECT_EQ(set(handle, "resolution", 75), SANE_STATUS_GOOD);
  ASSERT_EQ(start(handle), SANE_STATUS_GOOD);
  EXPECT_THAT(qvn({"scan", "-o", out("page.png")}).errors,
              testing::HasSubstr(family() == kBpd ? "another host may have it" : "busy with another host"));
  std::vector<SANE_Byte> page;
  EXPECT_EQ(readAll(handle, page), SANE_STATUS_EOF);
  ok({"scan", "--dpi", "75", "-o", out("page.png")});
  EXPECT_EQ(set(handle, "source", "ADF"), SANE_STATUS_GOOD);
  EXPECT_EQ(start(handle), SANE_STATUS_NO_DOCS);
  close(handle);
}

TEST_P(SaneBackend, TakesSheetsOneByOneAndAnewWhenItWasCancelled) {
  ScanStation::start({"--feeder", "3"});
  load();
  const SANE_Handle handle = openForGlass();
  EXPECT_EQ(set(handle, "source", "ADF"), SANE_STATUS_GOOD);
  const auto scanPage = [&](std::uint32_t width, std::uint32_t height) {
    EXPECT_EQ(start(handle), SANE_STATUS_GOOD);
    Picture picture{width, height, {}};
    EXPECT_EQ(readAll(handle, picture.rgb), SANE_STATUS_EOF);
    return picture;
  };
  EXPECT_EQ(set(handle, "resolution", 75), SANE_STATUS_GOOD);
  for (int page = 1; page <= 2; ++page) {
    const Picture picture = scanPage(637, 877);
    EXPECT_SAME_PICTURE(picture, sent(page));
  }
  // Something else between two sheets.
  EXPECT_EQ(set(handle, "source", "Flatbed"), SANE_STATUS_GOOD);
  EXPECT_EQ(set(handle, "resolution", 100), SANE_STATUS_GOOD);
  EXPECT_SAME_PICTURE(scanPage(850, 1170), glass());
  EXPECT_EQ(set(handle, "source", "ADF"), SANE_STATUS_GOOD);
  for (const bool cancelled : {true, false}) {
    device().command("load 1");
    EXPECT_SAME_PICTURE(scanPage(850, 1170), glass());
    if (cancelled) cancel(handle);
  }
  EXPECT_EQ(start(handle), SANE_STATUS_NO_DOCS);
  close(handle);
}

TEST_P(SaneBackend, LeavesNothingBehind) {
  ScanStation::start();
  // A sanitizer's runtime starts a thread of its own with the process's first.
  std::thread([] {}).join();
  const std::size_t before = threads();
  for (int round = 0; round < 3; ++round) {
    load();
    const SANE_Device** devices = nullptr;
    const auto list = function<decltype(sane_get_devices)>("get_devices");
    // The device is on a network.
    ASSERT_EQ(list(&devices, SANE_TRUE), SANE_STATUS_GOOD);
    EXPECT_EQ(devices[0], nullptr);
    ASSERT_EQ(list(&devices, SANE_FALSE), SANE_STATUS_GOOD);
    ASSERT_NE(devices[0], nullptr);
    EXPECT_STREQ(devices[0]->name, "IP_SIM0000001");
    EXPECT_STREQ(devices[0]->model, "Simulated Printer");
    EXPECT_EQ(devices[1], nullptr);
    SANE_Handle none = nullptr;
    EXPECT_EQ(function<decltype(sane_open)>("open")("NOWHERE", &none), SANE_STATUS_INVAL);
    const SANE_Handle handle = open("IP_SIM0000001");
    ASSERT_EQ(start(handle), SANE_STATUS_GOOD);
    // In the middle of a page.
    close(handle);
    unload();
    EXPECT_EQ(threads(), before);
  }
}

}  // namespace
}  // namespace qvn::test
