// Several processes that store, read and log at once while one of them is killed again and again.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "common/logging/basic_logger.h"
#include "device/store/printer_store.h"
#include "platform/files/paths.h"
#include "support/library_fixture.h"
#include "support/process/forked.h"

namespace qvn::test {
namespace {

constexpr int kKills = 12;
constexpr std::uint32_t kPerProcess = 40;

// For a child process, which initialises the library itself.
std::function<int()> initialized(const std::function<void()>& work) {
  return [=] {
    QvnInitialize();
    work();
    return 0;
  };
}

// Stores printers and says on the pipe which handles were acknowledged.
void storeAndLog(std::uint32_t firstHandle, std::uint32_t count, int progress) {
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t handle = firstHandle + i;
    if (PrinterStore::getInstance().persist(FakeTransport::printerText(handle)) != 0) _exit(3);
    logError(log_component::server(), [&] { return LogText() << "stored " << handle; });
    std::string text;
    if (PrinterStore::getInstance().read(handle, text) != 0) _exit(4);
    if (write(progress, &handle, sizeof handle) != sizeof handle) _exit(5);
  }
}

// Before this process initialises anything: children must not inherit an open registry.
TEST(Processes, NothingAcknowledgedIsLostWhenOneIsKilledInALoop) {
  int pipes[2];
  ASSERT_EQ(pipe(pipes), 0);
  const auto storesAll = [&](std::uint32_t firstHandle) {
    return initialized([=] {
      FakeTransport::registerModule();
      storeAndLog(firstHandle, kPerProcess, pipes[1]);
    });
  };
  Forked first(storesAll(1000));
  Forked second(storesAll(2000));
  std::vector<std::uint32_t> acknowledged;
  for (int kill = 0; kill < kKills; ++kill) {
    int victimPipes[2];
    ASSERT_EQ(pipe(victimPipes), 0);
    Forked victim(initialized(
        [&] { storeAndLog(10000 + 1000 * static_cast<std::uint32_t>(kill), 1000, victimPipes[1]); }));
    close(victimPipes[1]);
    // Killed at an arbitrary moment after its first few writes.
    std::uint32_t handle = 0;
    for (int i = 0; i <= kill % 4; ++i) {
      if (read(victimPipes[0], &handle, sizeof handle) == sizeof handle) acknowledged.push_back(handle);
    }
    EXPECT_EQ(victim.kill(), 128 + SIGKILL);
    while (read(victimPipes[0], &handle, sizeof handle) == sizeof handle) acknowledged.push_back(handle);
    close(victimPipes[0]);
  }
  close(pipes[1]);
  std::uint32_t handle = 0;
  while (read(pipes[0], &handle, sizeof handle) == sizeof handle) acknowledged.push_back(handle);
  close(pipes[0]);
  EXPECT_EQ(first.wait(), 0);
  EXPECT_EQ(second.wait(), 0);

  ASSERT_EQ(QvnInitialize(), 0u);
  EXPECT_GE(acknowledged.size(), 2 * kPerProcess + kKills);
  for (const std::uint32_t stored : acknowledged) {
    std::string text;
    EXPECT_EQ(PrinterStore::getInstance().read(stored, text), 0u) << stored;
    EXPECT_EQ(text, FakeTransport::printerText(stored));
  }
  std::ifstream log(platform::nativePath("c:\\qr__.log"), std::ios::binary);
  std::size_t lines = 0;
  for (std::string line; std::getline(log, line); ++lines) {
    EXPECT_TRUE(line.ends_with('\r')) << line;
    EXPECT_NE(line.find(" Server                    stored "), std::string::npos) << "cut in two: " << line;
  }
  EXPECT_GE(lines + kKills, acknowledged.size());
  EXPECT_EQ(QvnUninitialize(), 0u);
}

}  // namespace
}  // namespace qvn::test
