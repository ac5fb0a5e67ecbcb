#include "printer/bpd/states/bpd_printer_closed.h"

#include <utility>

#include <algorithm>
#include <cstring>

#include "common/logging/basic_logger.h"
#include "device/connection.h"
#include "device/connection_use.h"
#include "device/open_connection.h"
#include "device/visitor_run.h"
#include "printer/bpd/bpd_printer.h"
#include "printer/bpd/dc_summary_task.h"
#include "printer/bpd/states/bpd_printer_open.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connection_manager.h"
#include "qvn/transport/data.h"
#include "qvn/transport/visitor_manager.h"

namespace qvn {
namespace {

// Asks the transport whether the printer takes NPA packets.
std::uint32_t getNpaMode(BpdPrinter& printer, const Connection& connection, bool& npaMode) {
  std::uint32_t mode = 0;
  Data data(&mode, sizeof mode);
  const std::uint32_t rc = VisitorRun(printer, visitor_name::kGetNpaMode).run(connection, &data);
  std::memcpy(&mode, data.getBuffer(), std::min<std::size_t>(data.getLength(), sizeof mode));
  npaMode = mode != 0;
  return rc;
}

}  // namespace

const BpdPrinterClosed& BpdPrinterClosed::getInstance() {
  static const BpdPrinterClosed instance;
  return instance;
}

std::uint32_t BpdPrinterClosed::doOpen(BpdPrinter& printer) const {
  logDetail(log_component::server(),
            [&] { return LogText() << "BpdPrinterClosed::doOpen(handle=" << printer.getHandle(); });
  std::uint32_t rc = printer.verify();
  if (rc != QRN_ERROR_SUCCESS) return rc;
  const ConnectionUse connection(printer, connection_name::kBidi);
  OpenConnection bidi;
  rc = bidi.open(printer, *connection);
  if (rc != QRN_ERROR_SUCCESS) return rc;

  bool npaMode = false;
  rc = getNpaMode(printer, *connection, npaMode);
  if (rc != QRN_ERROR_SUCCESS) return rc;
  printer.setNpaMode(npaMode);
  if (npaMode) DcSummaryTask(printer, *connection).execute();
  printer.setBidiAllowed(npaMode);
  printer.keepBidi(std::move(bidi));
  printer.setOpenCount(1);
  printer.setState(BpdPrinterOpen::getInstance());
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn
