#include "ipv4/discovery/mdns.h"

#include <avahi-client/client.h>
#include <avahi-client/publish.h>
#include <avahi-common/error.h>
#include <avahi-common/simple-watch.h>
#include <avahi-common/strlst.h>
#include <signal.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

// libdbus takes the locks of several connections in either order, which ThreadSanitizer holds against it;
// each of the connections is used by one thread.
extern "C" const char* __tsan_default_suppressions() { return "deadlock:libdbus-1.so"; }

namespace qvn::test {
namespace {

constexpr char kBusSettings[] =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>system</type><auth>EXTERNAL</auth><listen>unix:path=%</listen><policy context="default">
<allow user="*"/><allow own="*"/><allow send_type="*"/><allow receive_type="*"/><allow send_destination="*"/>
</policy></busconfig>
)";

constexpr char kDaemonSettings[] = R"([server]
host-name=qvn-test
use-ipv4=yes
use-ipv6=no
allow-interfaces=lo
enable-dbus=yes
[wide-area]
enable-wide-area=no
[publish]
publish-workstation=no
)";

std::filesystem::path home() { return std::getenv("QVN_HOME"); }

std::string writeFile(const char* name, std::string content) {
  if (const auto at = content.find('%'); at != std::string::npos)
    content.replace(at, 1, (home() / "bus").string());
  std::ofstream(home() / name) << content;
  return (home() / name).string();
}

// Starts a program and waits for the line of its output that says it is ready.
std::unique_ptr<Child> startDaemon(const std::string& command, const std::string& readyLine) {
  auto child =
      std::make_unique<Child>(std::vector<std::string>{"/bin/sh", "-c", "exec " + command + " 2>&1"});
  std::string said;
  while (const auto line = child->readLine()) {
    if (line->find(readyLine) != std::string::npos) return child;
    said += *line + "\n";
  }
  throw std::runtime_error(command + " does not start: " + said);
}

}  // namespace

MdnsDaemon::MdnsDaemon() {
  const std::string busSettings = writeFile("bus.conf", kBusSettings);
  const std::string daemonSettings = writeFile("avahi.conf", kDaemonSettings);
  const std::string address = "unix:path=" + (home() / "bus").string();
  bus_ = startDaemon("dbus-daemon --nofork --print-address --config-file=" + busSettings, address);
  setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
  daemon_ = startDaemon("avahi-daemon --no-drop-root --no-chroot --no-rlimits -f " + daemonSettings,
                        "Server startup complete");
}

MdnsDaemon::~MdnsDaemon() {
  for (Child* child : {daemon_.get(), bus_.get()}) {
    child->signal(SIGTERM);
    child->wait();
  }
}

struct Announcement::Publisher {
  Publisher(const std::string& name, std::uint16_t port, const std::vector<std::string>& texts)
      : poll(avahi_simple_poll_new()) {
    int error = 0;
    client = avahi_client_new(
        avahi_simple_poll_get(poll), AvahiClientFlags{}, [](AvahiClient*, AvahiClientState, void*) {},
        nullptr, &error);
    if (client == nullptr) throw std::runtime_error(avahi_strerror(error));
    AvahiEntryGroup* group = avahi_entry_group_new(client, onState, this);
    AvahiStringList* list = nullptr;
    for (const std::string& text : texts) {
      list = avahi_string_list_add_arbitrary(list, reinterpret_cast<const std::uint8_t*>(text.data()),
                                             text.size());
    }
    error = avahi_entry_group_add_service_strlst(group, AVAHI_IF_UNSPEC, AVAHI_PROTO_INET,
                                                 AvahiPublishFlags{}, name.c_str(), "_pdl-datastream._tcp",
                                                 nullptr, nullptr, port, list);
    avahi_string_list_free(list);
    if (error == 0) error = avahi_entry_group_commit(group);
    if (error != 0) throw std::runtime_error(avahi_strerror(error));
    for (int turns = 0; turns < 100 && state != AVAHI_ENTRY_GROUP_ESTABLISHED; ++turns) {
      avahi_simple_poll_iterate(poll, 1000);
    }
    if (state != AVAHI_ENTRY_GROUP_ESTABLISHED) throw std::runtime_error("the service is not published");
  }
  ~Publisher() {
    if (client != nullptr) avahi_client_free(client);
    avahi_simple_poll_free(poll);
  }

  static void onState(AvahiEntryGroup*, AvahiEntryGroupState state, void* self) {
    static_cast<Publisher*>(self)->state = state;
  }

  AvahiSimplePoll* poll;
  AvahiClient* client = nullptr;
  AvahiEntryGroupState state = AVAHI_ENTRY_GROUP_UNCOMMITED;
};

Announcement::Announcement(const std::string& name, std::uint16_t port, const std::vector<std::string>& texts)
    : publisher_(std::make_unique<Publisher>(name, port, texts)) {}

Announcement::~Announcement() = default;

}  // namespace qvn::test
