// PrintJobTask: the base of the tasks of a print job.
#pragma once

#include <cstdint>

#include "common/tasks/task.h"
#include "device/connection.h"
#include "device/printer.h"

namespace qvn {

class PrintJobTask : public Task {
 protected:
  PrintJobTask(Printer& printer, const Connection& connection) : printer_(printer), connection_(connection) {}

  // Exchanges an NPA packet: 0 with the reply; 1 no exchange is allowed now, nothing was sent; 22 rejected;
  // else the transport's code.
  std::uint32_t exchange(Data& request, Data& reply);

  Printer& printer_;
  const Connection& connection_;
};

}  // namespace qvn
