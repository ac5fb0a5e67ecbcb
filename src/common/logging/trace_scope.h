// TraceScope: the entry and exit lines of an operation.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "common/logging/basic_logger.h"

namespace qvn {

// What a scope does without knowing how its text is composed.
class TraceScopeBase {
 public:
  TraceScopeBase(const TraceScopeBase&) = delete;
  TraceScopeBase& operator=(const TraceScopeBase&) = delete;

  // The exit line ends with " rc=" and this: a code in decimal, or any text.
  void setRc(std::uint32_t code) { setExitText(std::to_string(code)); }
  void setExitText(std::string text) { exitText_ = std::move(text); }
  bool isEntered() const { return entered_; }

 protected:
  TraceScopeBase(BasicLogger& logger, const Component& component, std::uint32_t level)
      : logger_(logger), component_(component), level_(level) {}
  ~TraceScopeBase() = default;

  void enter(const std::string& text);
  void leave();

  BasicLogger& logger_;
  const Component& component_;
  std::string text_;

 private:
  std::uint32_t level_;
  bool entered_ = false;
  std::string exitText_;
};

// Writes "+" and the text that `compose` gives when it is made, and "-", the text and the exit detail when it
// is destroyed; the lines between are indented by one more blank. Does nothing, and composes nothing, when it
// is made disabled or the level is not wanted.
template <typename Compose>
class [[nodiscard]] TraceScope : public TraceScopeBase {
 public:
  TraceScope(BasicLogger& logger, const Component& component, Compose compose,
             std::uint32_t level = log_level::kTrace, bool enabled = true)
      : TraceScopeBase(logger, component, level), compose_(std::move(compose)) {
    try {
      if (enabled && BasicLogger::isEnabled(component, level)) enter(compose_().str());
    } catch (...) {
      // An operation must not fail because its entry could not be logged.
    }
  }
  ~TraceScope() { leave(); }

  // Writes a detail line: the scope's text followed by what `detail` gives. Nothing when the scope was not
  // entered.
  template <typename Detail>
  void logDetail(Detail&& detail) {
    if (!isEntered()) return;
    qvn::logDetail(component_, [&] { return compose_() << detail().str(); });
  }

 private:
  Compose compose_;
};

}  // namespace qvn
