#include <algorithm>

#include "platform/process/log_writer.h"
#include "qvn/transport/log.h"

namespace qvn {

bool isTransportLogged(const char* component, std::uint32_t level) noexcept {
  const platform::LogWriter* const writer = platform::logWriter();
  return writer != nullptr && component != nullptr && writer->isWanted(component, level);
}

void transportLog(const char* component, std::uint32_t level, const std::string& text) noexcept {
  const platform::LogWriter* const writer = platform::logWriter();
  if (writer == nullptr || component == nullptr || !writer->isWanted(component, level)) return;
  try {
    std::string line = text;
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }, ' ');
    writer->write(component, level, line);
  } catch (...) {
    // No memory for the line.
  }
}

}  // namespace qvn
