// How every exported function runs: only while the library is initialised, traced, and without letting an
// exception out.
#pragma once

#include <cstdint>
#include <string>

#include "api/call_gate.h"
#include "common/exception.h"
#include "common/logging/trace_scope.h"
#include "qvn/result_codes.h"

namespace qvn {

// What the exit line of a traced function shows behind the result code.
class ExitDetail {
 public:
  explicit ExitDetail(bool wanted) : wanted_(wanted) {}

  template <typename Compose>
  void set(Compose&& compose) {
    if (wanted_) text_ = compose().str();
  }
  bool isWanted() const { return wanted_; }
  // The exit line then shows no result code either.
  void omitRc() { showRc_ = false; }

  const std::string& text() const { return text_; }
  bool showsRc() const { return showRc_; }

 private:
  bool wanted_;
  bool showRc_ = true;
  std::string text_;
};

// Runs the body; what it throws becomes a result code.
template <typename Body>
std::uint32_t guardedCall(Body&& body) noexcept {
  try {
    return body();
  } catch (...) {
    return codeOfCurrentException();
  }
}

// For functions that write no trace. 1 while the library is not initialised.
template <typename Body>
std::uint32_t untracedCall(Body&& body) noexcept {
  const CallGate::Pass pass;
  if (!pass.entered()) return QRN_ERROR_INVALID_FUNCTION;
  return guardedCall(body);
}

// For all others: `entryText` composes the text of both trace lines, `body` gets the ExitDetail to fill.
template <typename EntryText, typename Body>
std::uint32_t tracedCall(EntryText entryText, Body&& body) noexcept {
  return untracedCall([&] {
    TraceScope trace(BasicLogger::getInstance(), log_component::server(), entryText);
    ExitDetail exit(trace.isEntered());
    const std::uint32_t rc = guardedCall([&] { return body(exit); });
    if (trace.isEntered() && exit.showsRc()) trace.setExitText(std::to_string(rc) + exit.text());
    return rc;
  });
}

// "Name(handle) clientId=id" and "Name() clientId=id".
inline LogText entryText(const char* function, std::uint32_t handle, std::uint32_t clientId) {
  return LogText() << function << "(" << handle << ") clientId=" << clientId;
}
inline LogText entryText(const char* function, std::uint32_t clientId) {
  return LogText() << function << "() clientId=" << clientId;
}

// For texts that a client may leave out.
inline const char* orEmpty(const char* text) { return text == nullptr ? "" : text; }

// For the functions of a device whose handle may not be 0.
template <typename Body>
std::uint32_t deviceCall(const char* function, std::uint32_t clientId, std::uint32_t handle,
                         Body&& body) noexcept {
  return tracedCall([=] { return entryText(function, handle, clientId); },
                    [&](ExitDetail& exit) { return handle == 0 ? QRN_ERROR_INVALID_HANDLE : body(exit); });
}

}  // namespace qvn
