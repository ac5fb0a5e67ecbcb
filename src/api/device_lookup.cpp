#include "api/device_lookup.h"

#include <string_view>
#include <vector>

#include "common/text.h"
#include "platform/process/spooler.h"

namespace qvn {

std::string portOfSharedQueue(const std::string& name) {
  constexpr std::string_view kPrefix = "\\\\";
  if (!name.starts_with(kPrefix)) return name;
  const std::size_t separator = name.find('\\', kPrefix.size());
  if (separator == std::string::npos) return name;
  const std::string share = name.substr(separator + 1);
  std::vector<platform::PrintQueue> queues;
  platform::localPrintQueues(queues);
  for (const platform::PrintQueue& queue : queues) {
    if (equalsIgnoringCase(queue.shareName, share)) return queue.portName;
  }
  return name;
}

}  // namespace qvn
