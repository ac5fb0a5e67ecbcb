#include "cups/scheduler.h"

#include <signal.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "support/content_of.h"
#include "support/process/eventually.h"

namespace qvn::test {

namespace fs = std::filesystem;

namespace {

constexpr char kDaemon[] = "/usr/sbin/cupsd";
constexpr char kBackends[] = "/usr/lib/cups/";

void write(const fs::path& path, const std::string& text) { std::ofstream(path) << text; }

// As a copy, or by a script that gives it what the scheduler keeps from its backends: what programs need on a
// bus of the test's own.
void install(const fs::path& program, const fs::path& backend) {
  std::string bus;
  for (const char* name : {"LD_PRELOAD", "UMOCKDEV_DIR"}) {
    if (const char* const value = std::getenv(name)) bus += std::string(name) + "='" + value + "' ";
  }
  if (bus.empty()) {
    fs::copy_file(program, backend);
  } else {
    write(backend, "#!/bin/sh\n" + bus + "exec " + program.string() + " \"$@\"\n");
  }
}

}  // namespace

Scheduler::Scheduler(const fs::path& directory, const fs::path& home, std::uint16_t sharedAt)
    : directory_(directory) {
  if (!fs::exists(kDaemon) || !fs::exists("/usr/bin/lp")) {
    throw std::runtime_error("install cups-daemon and cups-client (scripts/setup.sh test)");
  }
  fs::remove_all(directory);
  for (const char* name : {"root", "bin/backend", "bin/filter", "cache", "state", "spool", "tmp", "doc"}) {
    fs::create_directories(directory / name);
  }
  fs::create_symlink(std::string(kBackends) + "daemon", directory / "bin/daemon");
  // As ours is installed: run as root where the scheduler is, since only its owner may execute it. The other
  // is what a queue reaches one of another scheduler with.
  for (const auto& [program, name] :
       {std::pair{QVN_CUPS_BACKEND, "qvn"}, {"/usr/lib/cups/backend/ipp", "ipp"}}) {
    const fs::path backend = directory / "bin/backend" / name;
    install(program, backend);
    fs::permissions(backend, fs::perms::owner_all | fs::perms::group_read | fs::perms::others_read);
  }

  const std::string at = directory.string();
  write(directory / "root/cups-files.conf",
        "ServerRoot " + at + "/root\nServerBin " + at + "/bin\nDataDir /usr/share/cups\nDocumentRoot " + at +
            "/doc\nCacheDir " + at + "/cache\nStateDir " + at + "/state\nRequestRoot " + at +
            "/spool\nTempDir " + at + "/tmp\nServerKeychain " + at + "/root\nPrintcap\nAccessLog " + at +
            "/access\nErrorLog " + at + "/log\nPageLog " + at + "/page\nSystemGroup root\nSetEnv QVN_HOME " +
            home.string() + "\nSetEnv QVN_TRANSPORT_PATH " QVN_CUPS_TRANSPORTS "\n");
  write(directory / "root/cupsd.conf",
        "Listen " + at + "/socket\n" +
            (sharedAt == 0 ? "" : "Listen 127.0.0.1:" + std::to_string(sharedAt) + "\nDefaultShared Yes\n") +
            "LogLevel debug\nMaxLogSize 0\nBrowsing No\nWebInterface No\nDefaultAuthType None\n"
            "JobRetryInterval 1\n"
            "<Location />\nOrder allow,deny\nAllow all\n</Location>\n"
            "<Policy default>\n<Limit All>\nOrder allow,deny\nAllow all\n</Limit>\n</Policy>\n");
  process_ = std::make_unique<Child>(std::vector<std::string>{kDaemon, "-f", "-c", at + "/root/cupsd.conf",
                                                              "-s", at + "/root/cups-files.conf"});
  if (!eventually([&] { return command({"lpstat", "-r"}).output == "scheduler is running\n"; })) {
    process_->signal(SIGTERM);
    process_->wait();
    throw std::runtime_error("cupsd does not come up: " + process_->errors() + log());
  }
}

Scheduler::~Scheduler() {
  process_->signal(SIGTERM);
  process_->wait();
}

Result Scheduler::command(std::vector<std::string> arguments) const {
  arguments.front() = (arguments.front() == "lpadmin" ? "/usr/sbin/" : "/usr/bin/") + arguments.front();
  return run(
      arguments, "",
      {{"CUPS_SERVER", (directory_ / "socket").string()}, {"HOME", directory_.string()}, {"LC_ALL", "C"}});
}

std::string Scheduler::log() const { return contentOf(directory_ / "log"); }

}  // namespace qvn::test
