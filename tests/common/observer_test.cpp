#include "qvn/transport/observer.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <functional>
#include <future>
#include <optional>
#include <thread>

#include "common/exception.h"
#include "common/tasks/observation.h"
#include "common/tasks/task.h"
#include "qvn/transport/subject.h"
#include "support/other_threads.h"

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

// An update of a recorder that another thread is in.
class Held {
 public:
  // `notify` reaches the recorder, which does `first` and then stays in its update.
  Held(
      Recorder& recorder, std::function<void()> notify, std::function<void()> first = [] {}) {
    recorder.then = [this, first] {
      first();
      inside_.set_value();
      goOn_.get_future().wait();
    };
    delivering_ = std::thread(std::move(notify));
    inside_.get_future().wait();
  }
  // That `operation` returns only when the update is over.
  void expectToHoldUp(const std::function<void()>& operation) {
    std::atomic<bool> returned{false};
    std::thread waiting([&] {
      operation();
      returned = true;
    });
    test::waitForOthersToRest();
    EXPECT_FALSE(returned);
    if (returned) std::_Exit(1);  // the update would go on in what is gone
    goOn_.set_value();
    waiting.join();
    delivering_.join();
  }

 private:
  std::promise<void> inside_;
  std::promise<void> goOn_;
  std::thread delivering_;
};

TEST_F(ObserverTest, AnObservationEndsOnlyWhenNoOtherThreadIsInAnUpdate) {
  std::optional<Observation> observation;
  observation.emplace(a, subject);
  // Detaching never waits; then it is detached already, yet its update still runs.
  Held held(
      a, [&] { subject.notify("1"); }, [&] { a.detachFrom(subject); });
  a.detachFrom(subject);
  held.expectToHoldUp([&] { observation.reset(); });
}

TEST_F(ObserverTest, AReferenceOutlivesItsSubjectWhichWaitsForNotifications) {
  auto mortal = std::make_unique<Subject>();
  const SubjectReference reference(*mortal);
  a.attachTo(*mortal);
  Data data("xyz", 3);
  EXPECT_TRUE(reference.notify(data));
  Held held(a, [&] { EXPECT_TRUE(reference.notify(data)); });
  held.expectToHoldUp([&] { mortal.reset(); });
  EXPECT_FALSE(reference.notify(data));
  EXPECT_FALSE(SubjectReference().notify(data));
  EXPECT_THAT(log, ElementsAre("a:#3", "a:#3"));
}

TEST(Task, AnswersOneUnlessItSaysOtherwise) {
  struct Listener : Task {
    ~Listener() override = default;
  } listener;
  EXPECT_EQ(listener.execute(), 1u);
}

}  // namespace
}  // namespace qvn
