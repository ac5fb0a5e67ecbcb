// NullEscCommand: what stands for data that is no ESC command.
#pragma once

#include "scanner/esc/esc_command.h"

namespace qvn {

class NullEscCommand final : public EscCommand {
 public:
  std::string getName() const override { return "NullEscCommand"; }
  std::uint32_t getHeaderLength() const override { return 0; }
  std::unique_ptr<EscCommand> create(const Data& /*data*/) const override { return create(); }
  std::unique_ptr<EscCommand> create() const override { return std::make_unique<NullEscCommand>(); }
};

}  // namespace qvn
