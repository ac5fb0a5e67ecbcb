// ConfigurationTask: asks a device's transport to accept a changed attribute.
#pragma once

#include <string>

#include "common/tasks/task.h"
#include "device/connection.h"
#include "qvn/transport/device.h"

namespace qvn {

class ConfigurationTask : public Task {
 public:
  // `attributes` is the attribute text with the change made; the descriptor names what was changed.
  ConfigurationTask(Device& device, const Connection& connection, std::string descriptor,
                    const std::string& attributes);
  ~ConfigurationTask() override = default;

 protected:
  std::uint32_t doExecute() override;

 private:
  Device& device_;
  const Connection& connection_;
  std::string descriptor_;
  Data attributes_;
};

}  // namespace qvn
