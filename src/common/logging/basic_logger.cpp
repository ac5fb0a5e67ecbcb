#include "common/logging/basic_logger.h"

#include <array>
#include <atomic>
#include <cstdio>
#include <mutex>
#include <optional>

#include "common/exception.h"
#include "common/settings/setting_table.h"
#include "common/threads/inter_process_lock.h"
#include "platform/base/clock.h"
#include "platform/base/error.h"
#include "platform/files/file.h"
#include "platform/files/paths.h"
#include "platform/process/log_writer.h"
#include "platform/threads/thread.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

constexpr char kMutexPrefix[] = "QRLOG_";
constexpr char kDefaultDriveRoot[] = "c:\\";
constexpr std::size_t kDriveRootLength = 3;
constexpr std::size_t kMaxDirectoryLength = 260;

// The process-wide state: the logger (set once per life of System) and the switch that stays off.
std::mutex instanceMutex;
std::atomic<BasicLogger*> instance{nullptr};
std::atomic<bool> stopped{false};

// What a module that this library has loaded writes under a name of its own.
const Component& componentNamed(const char* name, std::optional<Component>& unknown) {
  if (const Component* const known = log_component::find(name)) return *known;
  return unknown.emplace(name, 0);
}

constexpr platform::LogWriter kModulesWriter{
    [](const char* name, std::uint32_t level) {
      try {
        std::optional<Component> unknown;
        return BasicLogger::isEnabled(componentNamed(name, unknown), level);
      } catch (...) {
        return false;
      }
    },
    [](const char* name, std::uint32_t level, const std::string& text) {
      try {
        std::optional<Component> unknown;
        BasicLogger::getInstance().log(componentNamed(name, unknown), level, text);
      } catch (...) {
        // A line that cannot be composed or written is lost.
      }
    }};

std::string locate(const std::string& fileName) {
  if (fileName.find('\\') != std::string::npos) return fileName;
  std::string directory;
  if (platform::windowsDirectory(directory) != platform::kSuccess || directory.size() > kMaxDirectoryLength) {
    directory = kDefaultDriveRoot;
  }
  return directory.substr(0, kDriveRootLength) + fileName;
}

// "name=" and at least four lower-case hexadecimal digits.
std::string idField(const char* name, std::uint32_t id) {
  std::array<char, 24> field{};
  std::snprintf(field.data(), field.size(), "%s=%04x ", name, id);
  return field.data();
}

}  // namespace

BasicLogger::BasicLogger(const std::string& fileName) {
  try {
    filePath_ = locate(fileName);
    const std::string name = filePath_.substr(filePath_.rfind('\\') + 1);
    mutex_ = std::make_unique<Mutex>(false, kMutexPrefix + name, true);
  } catch (const Win32Exception&) {
    stop();
  }
}

BasicLogger::~BasicLogger() = default;

BasicLogger& BasicLogger::getInstance() {
  BasicLogger* logger = instance.load(std::memory_order_acquire);
  if (logger == nullptr) {
    throw Win32Exception("BasicLogger::getInstance()", QRN_ERROR_INVALID_FUNCTION, "", 0);
  }
  return *logger;
}

void BasicLogger::setInstance(std::unique_ptr<BasicLogger> logger) {
  std::lock_guard<std::mutex> lock(instanceMutex);
  if (instance.load() != nullptr) return;
  instance = logger.release();
  platform::setLogWriter(&kModulesWriter);
}

void BasicLogger::destroyInstance() {
  std::lock_guard<std::mutex> lock(instanceMutex);
  BasicLogger* const logger = instance.exchange(nullptr);
  if (logger == nullptr) return;
  platform::setLogWriter(nullptr);
  delete logger;
}

void BasicLogger::stop() { stopped = true; }

bool BasicLogger::isEnabled(const Component& component, std::uint32_t level) {
  const BasicLogger* logger = instance.load(std::memory_order_acquire);
  if (logger == nullptr || stopped.load(std::memory_order_relaxed)) return false;
  return logger->isWanted(component, level);
}

bool BasicLogger::isWanted(const Component& /*component*/, std::uint32_t level) const {
  if ((level & log_level::kError) != 0) return true;
  std::uint32_t startLog = 0;
  return getLong(setting::kStartLog.name, startLog, setting::kStartLog.byDefault) && startLog != 0;
}

std::uint32_t BasicLogger::setNameWidth(std::uint32_t width) {
  if (width == 0) return QRN_ERROR_INVALID_PARAMETER;
  nameWidth_ = width;
  return QRN_ERROR_SUCCESS;
}

bool BasicLogger::getLong(const std::string& name, std::uint32_t& value, std::uint32_t defaultValue) const {
  value = defaultValue;
  if (name == setting::kStartLog.name) {
    platform::ErrorCode error = platform::kSuccess;
    const bool exists = platform::File::open(filePath_, platform::File::Open::Existing, {}, error) != nullptr;
    value = exists ? 0xFFFFFFFF : 0;
  }
  return true;
}

void BasicLogger::onFileMissing() {}

std::string BasicLogger::prefix(const Component& /*component*/, std::uint32_t /*level*/) const { return {}; }

std::string BasicLogger::suffix(const Component& /*component*/, std::uint32_t /*level*/) const { return {}; }

void BasicLogger::log(const Component& component, std::uint32_t level, const char* text) {
  log(component, level, std::string(text == nullptr ? "" : text));
}

void BasicLogger::log(const Component& component, std::uint32_t level, const std::string& text) {
  if (!mutex_) return;
  const Header header = readHeader();
  try {
    InterProcessLock lock(*mutex_);
    // With the mutex held, so that time stamps never go backwards in the file.
    writeLine(composeLine(header, component, level, text));
  } catch (const Win32Exception&) {
    // Without the mutex the line could cut another process's line in two.
  }
}

BasicLogger::Header BasicLogger::readHeader() const {
  const auto shows = [this](const LongSetting& field) {
    std::uint32_t value = field.byDefault;
    getLong(field.name, value, field.byDefault);
    return value != 0;
  };
  return {shows(setting::kClocktimeInHeader), shows(setting::kProcIdInHeader),
          shows(setting::kThreadIdInHeader)};
}

std::string BasicLogger::composeLine(const Header& header, const Component& component, std::uint32_t level,
                                     const std::string& text) {
  std::string line = prefix(component, level);
  if (header.clocktime) {
    const platform::LocalTime t = platform::localTime(platform::clock().now());
    std::array<char, 96> stamp{};
    std::snprintf(stamp.data(), stamp.size(), "%04d/%02d/%02d-%02d:%02d:%02d.%03d ", t.year, t.month, t.day,
                  t.hour, t.minute, t.second, t.millisecond);
    line += stamp.data();
  }
  if (header.processId) line += idField("pid", platform::currentProcessId());
  if (header.threadId) line += idField("tid", platform::currentThreadId());

  std::string name = component.getName();
  if (name.size() < nameWidth_) name.resize(nameWidth_, ' ');
  line += name + " ";
  const std::int32_t indent = depth();
  if (indent > 0) line.append(static_cast<std::size_t>(indent), ' ');
  return line + text + suffix(component, level) + "\r\n";
}

void BasicLogger::writeLine(const std::string& line) {
  platform::ErrorCode error = platform::kSuccess;
  if (!platform::File::open(filePath_, platform::File::Open::Existing, {}, error)) onFileMissing();
  const auto file = platform::File::open(filePath_, platform::File::Open::CreateIfMissing,
                                         security_.getSecurityAttributes(), error);
  if (file && file->seekToEnd() == platform::kSuccess) file->write(line);
}

void BasicLogger::deleteLogFile() {
  if (!mutex_) return;
  InterProcessLock lock(*mutex_);
  platform::deleteFile(filePath_);
}

std::int32_t BasicLogger::depth() {
  CriticalSectionLock lock(depthLock_);
  const auto found = depths_.find(platform::currentThreadId());
  return found == depths_.end() ? 0 : found->second;
}

void BasicLogger::enterScope() {
  CriticalSectionLock lock(depthLock_);
  ++depths_[platform::currentThreadId()];
}

void BasicLogger::leaveScope() {
  CriticalSectionLock lock(depthLock_);
  --depths_[platform::currentThreadId()];
}

}  // namespace qvn
