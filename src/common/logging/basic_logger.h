// BasicLogger: the one logger of the process; it writes whole lines into a file that several processes share.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "common/logging/log_component.h"
#include "common/logging/log_text.h"
#include "common/threads/mutex.h"
#include "common/threads/security.h"
#include "qvn/transport/critical_section.h"

namespace qvn {

// Any thread may log; a line is written under a mutex named after the file, with the file opened and closed
// for it. Logging never fails for its caller: what cannot be written is lost.
class BasicLogger {
 public:
  // `fileName` lies in the root of the drive that holds the system, unless it has a backslash.
  explicit BasicLogger(const std::string& fileName);
  BasicLogger(const BasicLogger&) = delete;
  BasicLogger& operator=(const BasicLogger&) = delete;
  virtual ~BasicLogger();

  // Write one line, without asking whether it is wanted.
  virtual void log(const Component& component, std::uint32_t level, const std::string& text);
  virtual void log(const Component& component, std::uint32_t level, const char* text);
  virtual void deleteLogFile();
  // A value of the logger's configuration. Without a registry only "startLog" is one: 0xFFFFFFFF when the log
  // file exists.
  virtual bool getLong(const std::string& name, std::uint32_t& value, std::uint32_t defaultValue) const;

  // The process's logger; Win32Exception with code 1 when there is none.
  static BasicLogger& getInstance();
  // Makes the logger the process's unless there is one; the one in force is the answer's owner then.
  static void setInstance(std::unique_ptr<BasicLogger> logger);
  static void destroyInstance();

  // Whether a line of that component and level is to be written. False when there is no logger.
  static bool isEnabled(const Component& component, std::uint32_t level);

  // Turns logging off for the rest of the process.
  static void stop();

  // 87 for a width of 0.
  std::uint32_t setNameWidth(std::uint32_t width);
  const std::string& getFilePath() const { return filePath_; }

  // The calling thread's depth: how far its lines are indented.
  void enterScope();
  void leaveScope();

 protected:
  // Called when the log file is not there yet.
  virtual void onFileMissing();
  virtual std::string prefix(const Component& component, std::uint32_t level) const;
  virtual std::string suffix(const Component& component, std::uint32_t level) const;

  // The tests that depend on the configuration.
  virtual bool isWanted(const Component& component, std::uint32_t level) const;

 private:
  // What a line shows before its component.
  struct Header {
    bool clocktime;
    bool processId;
    bool threadId;
  };
  Header readHeader() const;
  std::string composeLine(const Header& header, const Component& component, std::uint32_t level,
                          const std::string& text);
  void writeLine(const std::string& line);
  std::int32_t depth();

  std::unique_ptr<Mutex> mutex_;
  std::string filePath_;
  std::uint32_t nameWidth_ = 25;
  CriticalSection depthLock_;
  std::map<std::uint32_t, std::int32_t> depths_;
  SecurityEveryone security_{false};
};

// Writes the line that `compose` puts together, if it is wanted; composing costs nothing when it is not.
template <typename Compose>
void log(const Component& component, std::uint32_t level, Compose&& compose) {
  try {
    if (!BasicLogger::isEnabled(component, level)) return;
    BasicLogger::getInstance().log(component, level, compose().str());
  } catch (...) {
    // A line that cannot be composed or written is lost.
  }
}

template <typename Compose>
void logError(const Component& component, Compose&& compose) {
  log(component, log_level::kError, compose);
}

template <typename Compose>
void logDetail(const Component& component, Compose&& compose) {
  log(component, log_level::kDetail, compose);
}

}  // namespace qvn
