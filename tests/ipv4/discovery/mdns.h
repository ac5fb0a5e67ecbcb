// A network of the test's own, on which printers announce themselves: a loopback interface, a D-Bus daemon
// and an Avahi daemon that nobody else can see.
#pragma once

#include <signal.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "support/process/child.h"

namespace qvn::test {

// A D-Bus daemon and an Avahi daemon, ready to be asked through the environment of this process.
class MdnsDaemon {
 public:
  // Throws std::runtime_error with the daemons' own words when one does not start.
  MdnsDaemon();
  ~MdnsDaemon();
  MdnsDaemon(const MdnsDaemon&) = delete;
  MdnsDaemon& operator=(const MdnsDaemon&) = delete;

  // It stays on the bus and does nothing until it is woken.
  void fallAsleep() { daemon_->signal(SIGSTOP); }
  void wake() { daemon_->signal(SIGCONT); }

 private:
  std::unique_ptr<Child> bus_;
  std::unique_ptr<Child> daemon_;
};

// A printer announced for as long as this object lives.
class Announcement {
 public:
  // `texts` are those of the TXT record, "key=value". Returns when the network knows; throws
  // std::runtime_error.
  Announcement(const std::string& name, std::uint16_t port, const std::vector<std::string>& texts);
  ~Announcement();
  Announcement(const Announcement&) = delete;
  Announcement& operator=(const Announcement&) = delete;

 private:
  struct Publisher;
  std::unique_ptr<Publisher> publisher_;
};

}  // namespace qvn::test
