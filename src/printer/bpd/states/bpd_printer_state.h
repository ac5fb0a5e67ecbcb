// BpdPrinterState: what a Bpd printer does with each operation while it is in a state.
//
//              Closed          Open            Printing          PrintingError     PrintCanceled
//   open       -> Open         count           count             count             count
//   close      count           -> Closed       count             count             count
//   startJob   1               -> Printing     1                 1                 1
//   print      1               1               write (*)         write, -> Printing 1
//   endJob     1               1               -> Open           -> Open           1
//   cancel     1               1               nothing, 0        -> PrintCanceled  1
//   npa        1               exchange        exchange          1                 1
//
//   (*) -> PrintingError when the write fails
//   count: only the open count changes; the close that brings it to 0 goes to Closed
#pragma once

#include <cstdint>

#include "device/job_description.h"
#include "qvn/transport/data.h"

namespace qvn {

class BpdPrinter;

// One object per class, shared by all printers and without data. Called with the printer's state lock held.
// The operations here are what a state does that does not say otherwise: they answer 1, except that opens and
// closes are counted.
class BpdPrinterState {
 public:
  BpdPrinterState(const BpdPrinterState&) = delete;
  BpdPrinterState& operator=(const BpdPrinterState&) = delete;
  virtual ~BpdPrinterState();

  // Always idle: these printers report neither a job nor an error.
  virtual std::uint32_t stateCode() const;
  virtual void doEnterState(BpdPrinter& printer) const;
  virtual std::uint32_t doOpen(BpdPrinter& printer) const;
  virtual std::uint32_t doClose(BpdPrinter& printer) const;
  virtual std::uint32_t doStartJob(BpdPrinter& printer, const JobRequest& job) const;
  virtual std::uint32_t doPrint(BpdPrinter& printer, Data& request) const;
  virtual std::uint32_t doEndJob(BpdPrinter& printer) const;
  virtual std::uint32_t doCancelPrint(BpdPrinter& printer) const;
  virtual std::uint32_t doExchangeNpa(BpdPrinter& printer, Data& request, Data& response) const;

 protected:
  // `name` is the name of the class in the log.
  explicit BpdPrinterState(const char* name) : name_(name) {}

  // Steps that several states share.
  static std::uint32_t exchange(BpdPrinter& printer, Data& request, Data& response);
  // Ends the job and gives the print connection back.
  static std::uint32_t runEndJobTask(BpdPrinter& printer);

 private:
  const char* const name_;
};

}  // namespace qvn
