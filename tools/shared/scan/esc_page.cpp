#include "shared/scan/esc_page.h"
#include "shared/scan/error.h"

namespace qvn::scan {

void EscPage::receive(std::uint32_t, Bytes command) noexcept {
  if (ended()) return;
  try {
    put(assembler_.take(command));
    if (assembler_.complete()) end();
  } catch (const Error& error) {
    end(error);
  } catch (const std::exception& error) {
    end(Error(Problem::Failed, error.what()));
  }
}

}  // namespace qvn::scan
