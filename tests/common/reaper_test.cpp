#include "common/clients/reaper.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "common/clients/client_call.h"
#include "support/other_threads.h"

namespace qvn::test {
namespace {

struct ReaperTest : testing::Test {
  ~ReaperTest() override { Reaper::destroyInstance(); }
};

TEST_F(ReaperTest, DoesWhatItIsHandedInOrderAndIsWaitedForOutsideCallbacks) {
  Reaper& reaper = Reaper::getInstance();
  std::string done;
  std::promise<void> goOn;
  reaper.post([&] {
    goOn.get_future().wait();
    done += "1";
  });
  ClientCall::run([&] { reaper.flush(); });  // returns at once
  std::atomic<bool> flushed{false};
  std::thread waiting([&] {
    reaper.flush();
    flushed = true;
  });
  waitForOthersToRest();
  EXPECT_FALSE(flushed);
  reaper.post([&] {
    done += "2";
    throw std::runtime_error("contained");
  });
  goOn.set_value();
  waiting.join();
  reaper.flush();
  EXPECT_EQ(done, "12");

  // The last copy of a shared reference hands the object over.
  auto object = std::make_shared<std::shared_ptr<int>>(std::make_shared<int>(7));
  const std::weak_ptr<int> content = *object;
  Reaper::share(std::move(object)).reset();
  reaper.flush();
  EXPECT_TRUE(content.expired());
}

}  // namespace
}  // namespace qvn::test
