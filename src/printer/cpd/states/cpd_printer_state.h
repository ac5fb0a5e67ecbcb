// CpdPrinterState: what a Cpd printer does with each operation while it is in a state.
//
//              Closed          Open            Printing          PrintCanceled     PrintingError
//   open       -> Open         count           count             count             count
//   close      count           -> Closed       count             count             count
//   startJob   1               -> Printing (*) 1                 1                 1
//   print      1               1               write (**)        discard           write, -> Printing
//   endJob     1               1               -> Open           -> Open           -> Open
//   cancel     1               1               -> PrintCanceled  1                 -> PrintCanceled
//   npa        1               exchange        1                 1                 1
//
//   (*) or PrintCanceled when the printer rejects the job     (**) -> PrintingError when the write fails
//   count: only the open count changes; the close that brings it to 0 goes to Closed
#pragma once

#include <cstdint>

#include "device/job_description.h"
#include "qvn/transport/data.h"

namespace qvn {

class CpdPrinter;

// One object per class, shared by all printers and without data. Called with the printer's state lock held.
// The operations here are what a state does that does not say otherwise: they answer 1, except that opens and
// closes are counted.
class CpdPrinterState {
 public:
  CpdPrinterState(const CpdPrinterState&) = delete;
  CpdPrinterState& operator=(const CpdPrinterState&) = delete;
  virtual ~CpdPrinterState();

  // 1 busy printing, 2 error, 3 idle.
  virtual std::uint32_t stateCode() const = 0;
  // Tells the printer's clients the state code.
  virtual void doEnterState(CpdPrinter& printer) const;
  virtual std::uint32_t doOpen(CpdPrinter& printer) const;
  virtual std::uint32_t doClose(CpdPrinter& printer) const;
  virtual std::uint32_t doStartJob(CpdPrinter& printer, const JobRequest& job) const;
  virtual std::uint32_t doPrint(CpdPrinter& printer, Data& request) const;
  virtual std::uint32_t doEndJob(CpdPrinter& printer) const;
  virtual std::uint32_t doCancelPrint(CpdPrinter& printer) const;
  virtual std::uint32_t doExchangeNpa(CpdPrinter& printer, Data& request, Data& response) const;

 protected:
  CpdPrinterState() = default;

  // Steps that the states which end a job share.
  static std::uint32_t runEndJobTask(CpdPrinter& printer);
  // The end of a job that was cancelled or failed: nothing of it is left when Open is entered.
  static std::uint32_t endBrokenJob(CpdPrinter& printer);
};

}  // namespace qvn
