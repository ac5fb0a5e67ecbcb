#include "qvn/transport/subject.h"

#include <algorithm>
#include <array>
#include <span>

namespace qvn {

// What references share with their subject: it outlives the subject.
struct SubjectReference::Link {
  std::mutex mutex;
  std::condition_variable ended;
  Subject* subject = nullptr;
  // The threads that are in a call of the subject.
  std::vector<std::thread::id> users;
};

SubjectReference::SubjectReference(Subject& subject) : link_(subject.self_.link_) {}

SubjectReference::Use::Use(const SubjectReference& reference) : link_(reference.link_) {
  if (link_ == nullptr) return;
  std::lock_guard<std::mutex> lock(link_->mutex);
  subject_ = link_->subject;
  if (subject_ != nullptr) link_->users.push_back(std::this_thread::get_id());
}

SubjectReference::Use::~Use() {
  if (subject_ == nullptr) return;
  std::lock_guard<std::mutex> lock(link_->mutex);
  link_->users.erase(std::find(link_->users.begin(), link_->users.end(), std::this_thread::get_id()));
  link_->ended.notify_all();
}

bool SubjectReference::notify(Data& data) const {
  const Use use(*this);
  if (use.subject() == nullptr) return false;
  use.subject()->notify(data);
  return true;
}

Subject::Subject()
    : self_([this] {
        SubjectReference reference;
        reference.link_ = std::make_shared<SubjectReference::Link>();
        reference.link_->subject = this;
        return reference;
      }()) {}

Subject::~Subject() { endReferences(); }

void Subject::endReferences() {
  SubjectReference::Link& link = *self_.link_;
  std::unique_lock<std::mutex> lock(link.mutex);
  link.subject = nullptr;
  link.ended.wait(lock, [&] {
    return std::all_of(link.users.begin(), link.users.end(),
                       [](std::thread::id thread) { return thread == std::this_thread::get_id(); });
  });
}

void Subject::attach(Observer& observer) {
  std::lock_guard<std::mutex> lock(mutex_);
  observers_.push_back(&observer);
}

void Subject::detach(Observer& observer) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto found = std::find(observers_.begin(), observers_.end(), &observer);
  if (found == observers_.end()) return;
  observers_.erase(found);
  ++version_;
}

void Subject::waitForUpdates(const Observer& observer) {
  std::unique_lock<std::mutex> lock(mutex_);
  const std::thread::id self = std::this_thread::get_id();
  // Two threads in updates of one observer that both detach it must not wait for each other.
  const bool insideUpdate = std::any_of(running_.begin(), running_.end(), [&](const RunningUpdate& update) {
    return update.observer == &observer && update.thread == self;
  });
  if (insideUpdate) return;
  updateEnded_.wait(lock, [&] {
    return std::none_of(running_.begin(), running_.end(),
                        [&](const RunningUpdate& update) { return update.observer == &observer; });
  });
}

bool Subject::beginUpdate(const Observer& observer, std::uint32_t snapshotVersion) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (version_ != snapshotVersion &&
      std::find(observers_.begin(), observers_.end(), &observer) == observers_.end()) {
    return false;
  }
  running_.push_back({&observer, std::this_thread::get_id()});
  return true;
}

void Subject::endUpdate(const Observer& observer) {
  std::lock_guard<std::mutex> lock(mutex_);
  const std::thread::id self = std::this_thread::get_id();
  // The last one: an observer's update may itself notify.
  const auto found = std::find_if(running_.rbegin(), running_.rend(), [&](const RunningUpdate& update) {
    return update.observer == &observer && update.thread == self;
  });
  if (found != running_.rend()) running_.erase(std::next(found).base());
  updateEnded_.notify_all();
}

template <typename Call>
void Subject::notifyEach(Call&& call) {
  try {
    // Few observers are the rule: they need no allocation.
    std::array<Observer*, 8> few;
    std::vector<Observer*> many;
    std::span<Observer*> snapshot;
    std::uint32_t version = 0;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      if (observers_.size() <= few.size()) {
        snapshot = {few.begin(), std::copy(observers_.begin(), observers_.end(), few.begin())};
      } else {
        many = observers_;
        snapshot = many;
      }
      version = version_;
    }
    for (Observer* observer : snapshot) {
      if (!beginUpdate(*observer, version)) continue;
      struct UpdateEnd {
        Subject& subject;
        const Observer& observer;
        ~UpdateEnd() { subject.endUpdate(observer); }
      } end{*this, *observer};
      // Outside the lock, so that an observer may attach and detach from inside its update.
      call(*observer);
    }
  } catch (...) {
    // Whoever notifies is a transport's thread, which can do nothing about an observer that throws.
  }
}

void Subject::notify(std::uint32_t id, const std::string& text) {
  notifyEach([&](Observer& observer) { observer.update(id, text); });
}

void Subject::notify(std::uint32_t id, Data& data) {
  notifyEach([&](Observer& observer) { observer.update(id, data); });
}

void Subject::notify(const std::string& text) {
  notifyEach([&](Observer& observer) { observer.update(text); });
}

void Subject::notify(Data& data) {
  notifyEach([&](Observer& observer) { observer.update(data); });
}

}  // namespace qvn
