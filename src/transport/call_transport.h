// How the library calls its transports.
#pragma once

#include <cstdint>
#include <string>

#include "common/exception.h"
#include "common/logging/basic_logger.h"
#include "qvn/result_codes.h"

namespace qvn {

// One call into a transport module; every one is made through here and nowhere else. What is thrown there and
// is not the library's own becomes a Win32Exception with code 1359. `what` names the call in the log.
template <typename Call>
auto callTransport(const char* what, Call&& call) {
  try {
    return call();
  } catch (const Win32Exception& exception) {
    if (exception.getCode() != QRN_ERROR_SUCCESS) throw;
    throw Win32Exception(exception.getMessage(), QRN_ERROR_INTERNAL_ERROR, "", 0);
  } catch (...) {
    throw Win32Exception(std::string(what) + " threw", QRN_ERROR_INTERNAL_ERROR, "", 0);
  }
}

// The same for a call whose failure is a result like others: what is thrown becomes its code, with a line in
// the log.
template <typename Call>
std::uint32_t transportResult(const char* what, Call&& call) {
  try {
    return callTransport(what, call);
  } catch (const Win32Exception& exception) {
    logError(log_component::server(),
             [&] { return LogText() << what << " exception=" << exception.describe(); });
    return exception.getCode();
  } catch (...) {
    // No memory for the exception.
    return codeOfCurrentException();
  }
}

}  // namespace qvn
