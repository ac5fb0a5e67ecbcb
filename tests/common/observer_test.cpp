#include "qvn/transport/observer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <thread>

#include "common/exception.h"
#include "common/tasks/task.h"
#include "qvn/transport/subject.h"

namespace qvn {
namespace {

using testing::ElementsAre;

struct Recorder : Observer {
  Recorder(std::string observerName, std::vector<std::string>& observerLog)
      : name(std::move(observerName)), log(observerLog) {}

  void doUpdate(std::uint32_t id, const std::string& text) override { heard(std::to_string(id) + text); }
  void doUpdate(std::uint32_t id, Data& data) override {
    heard(std::to_string(id) + "#" + std::to_string(data.getLength()));
  }
  void doUpdate(const std::string& text) override { heard(text); }
  void doUpdate(Data& data) override { heard("#" + std::to_string(data.getLength())); }

  void heard(const std::string& what) {
    log.push_back(name + ":" + what);
    if (then) then();
  }

  std::string name;
  std::vector<std::string>& log;
  std::function<void()> then;
};

class ObserverTest : public testing::Test {
 protected:
  std::vector<std::string> log;
  Subject subject;
  Recorder a{"a", log};
  Recorder b{"b", log};
  Recorder c{"c", log};
};

TEST_F(ObserverTest, EachNotificationReachesItsHookInOrderOfAttaching) {
  b.attachTo(subject);
  a.attachTo(subject);
  Data data("xyz", 3);
  subject.notify(7, "text");
  subject.notify(8, data);
  subject.notify("plain");
  subject.notify(data);
  EXPECT_THAT(log, ElementsAre("b:7text", "a:7text", "b:8#3", "a:8#3", "b:plain", "a:plain", "b:#3", "a:#3"));
}

TEST_F(ObserverTest, AttachedTwiceIsCalledTwiceUntilDetachedOnce) {
  a.attachTo(subject);
  a.attachTo(subject);
  subject.notify("1");
  a.detachFrom(subject);
  subject.notify("2");
  a.detachFrom(subject);
  a.detachFrom(subject);
  subject.notify("3");
  EXPECT_THAT(log, ElementsAre("a:1", "a:1", "a:2"));
}

TEST_F(ObserverTest, ChangesDuringAPassTakeEffectAsTheyMust) {
  a.attachTo(subject);
  b.attachTo(subject);
  a.then = [&] {
    a.detachFrom(subject);  // completes its own call
    b.detachFrom(subject);  // not called any more
    c.attachTo(subject);    // not called in this pass
  };
  subject.notify("1");
  subject.notify("2");
  EXPECT_THAT(log, ElementsAre("a:1", "c:2"));
}

TEST_F(ObserverTest, AThrowingObserverEndsThePassAndNothingReachesTheCaller) {
  a.attachTo(subject);
  b.attachTo(subject);
  a.then = [] { throw Win32Exception("no", 1, "", 0); };
  EXPECT_NO_THROW(subject.notify("1"));
  EXPECT_THAT(log, ElementsAre("a:1"));
}

TEST_F(ObserverTest, DetachReturnsOnlyWhenNoOtherThreadIsInAnUpdate) {
  a.attachTo(subject);
  std::promise<void> inside;
  std::promise<void> goOn;
  std::atomic<bool> updateEnded{false};
  a.then = [&] {
    a.detachFrom(subject);  // from inside: returns at once
    inside.set_value();
    goOn.get_future().wait();
    updateEnded = true;
  };
  std::thread delivering([&] { subject.notify("1"); });
  inside.get_future().wait();
  std::thread finishing([&] {
    a.detachFrom(subject);  // detached already, yet its update still runs
    EXPECT_TRUE(updateEnded);
  });
  goOn.set_value();
  finishing.join();
  delivering.join();
}

TEST_F(ObserverTest, AReferenceOutlivesItsSubjectWhichWaitsForNotifications) {
  auto mortal = std::make_unique<Subject>();
  const SubjectReference reference(*mortal);
  a.attachTo(*mortal);
  Data data("xyz", 3);
  EXPECT_TRUE(reference.notify(data));
  std::promise<void> inside;
  std::promise<void> goOn;
  std::atomic<bool> updateEnded{false};
  a.then = [&] {
    inside.set_value();
    goOn.get_future().wait();
    updateEnded = true;
  };
  std::thread delivering([&] { EXPECT_TRUE(reference.notify(data)); });
  inside.get_future().wait();
  std::thread destroying([&] {
    mortal.reset();
    EXPECT_TRUE(updateEnded);
  });
  goOn.set_value();
  destroying.join();
  delivering.join();
  EXPECT_FALSE(reference.notify(data));
  EXPECT_FALSE(SubjectReference().notify(data));
  EXPECT_THAT(log, ElementsAre("a:#3", "a:#3"));
}

TEST_F(ObserverTest, ManyObserversAreCalledInOrder) {
  std::vector<std::unique_ptr<Recorder>> many;
  std::vector<std::string> expected;
  for (int i = 0; i < 100; ++i) {
    many.push_back(std::make_unique<Recorder>(std::to_string(i), log));
    many.back()->attachTo(subject);
    expected.push_back(std::to_string(i) + ":x");
  }
  subject.notify("x");
  EXPECT_EQ(log, expected);
}

TEST(Task, AnswersOneUnlessItSaysOtherwise) {
  struct Listener : Task {
    ~Listener() override = default;
  } listener;
  EXPECT_EQ(listener.execute(), 1u);
}

}  // namespace
}  // namespace qvn
