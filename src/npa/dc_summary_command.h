// DcSummaryCommand: asks the printer for its summary: the largest packet it takes, its NPA revisions.
#pragma once

#include <array>
#include <cstdint>

#include "npa/npa_command.h"
#include "npa/npa_templates.h"
#include "qvn/transport/data.h"

namespace qvn {

class DcSummaryCommand : public NpaCommand {
 public:
  using Revisions = std::array<std::uint8_t, 3>;

  DcSummaryCommand() : NpaCommand(npa_template::kDcSummary) {}

  // False, the out-value untouched, when the reply does not match or ends before the field.
  bool getMaxPacketSize(const Data& reply, std::uint32_t& size) const;
  bool getNpaVersions(const Data& reply, Revisions& revisions) const;
};

}  // namespace qvn
