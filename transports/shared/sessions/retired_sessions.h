// Sessions that are closed while their threads still finish. A session may be closed from inside one of
// its deliveries, so nobody who closes one waits for it; this list does.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "shared/sessions/session.h"

namespace qvn::shared {

class RetiredSessions {
 public:
  // Closes the session and frees those retired earlier that have finished. Null does nothing.
  void retire(std::shared_ptr<Session> session);

  // Waits for the threads of all. Not on one of them.
  void join();

 private:
  std::mutex mutex_;
  std::vector<std::shared_ptr<Session>> sessions_;
};

}  // namespace qvn::shared
