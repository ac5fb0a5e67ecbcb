// A page that comes as ESC commands.
#pragma once

#include "shared/scan/bytes.h"
#include "shared/scan/cancel_signal.h"
#include "shared/scan/esc_page_assembler.h"
#include "shared/scan/page.h"
#include "shared/scan/receiver.h"

namespace qvn::scan {

class EscPage : public Page, public Receiver {
 public:
  EscPage(std::uint64_t bytes, const CancelSignal& cancel) : Page(cancel), assembler_(bytes) {}

  // Takes one command; Cpd scanners send nothing else.
  void receive(std::uint32_t kind, Bytes command) noexcept override;

 private:
  EscPageAssembler assembler_;
};

}  // namespace qvn::scan
