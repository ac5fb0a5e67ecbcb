#include "shared/sessions/retired_sessions.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace qvn::shared {

void RetiredSessions::retire(std::shared_ptr<Session> session) {
  if (session == nullptr) return;
  session->close();
  std::vector<std::shared_ptr<Session>> finished;  // freed without the lock
  const std::lock_guard<std::mutex> lock(mutex_);
  sessions_.push_back(std::move(session));
  const auto firstFinished = std::partition(sessions_.begin(), sessions_.end(),
                                            [](const auto& retired) { return !retired->isFinished(); });
  finished.assign(std::make_move_iterator(firstFinished), std::make_move_iterator(sessions_.end()));
  sessions_.erase(firstFinished, sessions_.end());
}

void RetiredSessions::join() {
  std::vector<std::shared_ptr<Session>> all;
  const std::lock_guard<std::mutex> lock(mutex_);
  all.swap(sessions_);
}

}  // namespace qvn::shared
