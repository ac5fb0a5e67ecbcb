// DcSummaryTask: asks a printer for its summary and passes on what the transport must know of it.
#pragma once

#include "bidi/exchange_task.h"
#include "device/connection.h"
#include "device/printer.h"
#include "npa/dc_summary_command.h"
#include "qvn/transport/observer.h"

namespace qvn {

// What the task exchanges; made before the task's other base, which refers to it.
struct DcSummaryExchange {
  DcSummaryCommand command_;
  Data reply_;
};

// Writes the largest packet size and the NPA revisions into the printer's attributes. Runs while a printer is
// being opened, when exchanges are not allowed yet; where the transport has none (1) there is nothing to do:
// 0.
class DcSummaryTask : private DcSummaryExchange, public ExchangeTask {
 public:
  DcSummaryTask(Printer& printer, const Connection& connection);
  ~DcSummaryTask() override = default;

 protected:
  std::uint32_t doExecute() override;
  std::uint32_t runMethod() override;
  using Observer::doUpdate;
  void doUpdate(Data& data) override;

 private:
  std::uint32_t applySummary();

  Printer& printer_;
};

}  // namespace qvn
