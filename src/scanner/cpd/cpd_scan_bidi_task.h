// CpdScanBidiTask: exchanges one ESC command with a scanner.
#pragma once

#include <memory>

#include "bidi/generic_bidi_task.h"
#include "device/connection.h"
#include "qvn/transport/data.h"
#include "qvn/transport/device.h"
#include "qvn/transport/observer.h"
#include "scanner/esc/esc_command.h"

namespace qvn {

// Result: 0 with the reply in the response, which stays empty for a command without reply; else the
// transport's code.
class CpdScanBidiTask : public GenericBidiTask {
 public:
  CpdScanBidiTask(Device& scanner, const Connection& connection, Data& request, Data& response);
  ~CpdScanBidiTask() override = default;

 protected:
  using Observer::doUpdate;
  void doUpdate(Data& data) override;

 private:
  // What was asked; null once nothing more is awaited.
  std::unique_ptr<EscCommand> command_;
};

}  // namespace qvn
