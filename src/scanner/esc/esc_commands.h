// The classes of the ESC commands, one for each row of the table.
#pragma once

#include <string_view>

#include "common/exception.h"
#include "scanner/esc/table_esc_command.h"

namespace qvn {
namespace esc {

// The row with that name; a name that is not in the table does not compile.
consteval std::size_t row(std::string_view name) {
  for (std::size_t i = 0; i < kCommands.size(); ++i) {
    if (name == kCommands[i].name) return i;
  }
  throw "no such command";
}

}  // namespace esc

template <std::size_t Row>
class NamedEscCommand final : public TableEscCommand {
 public:
  NamedEscCommand() : TableEscCommand(esc::kCommands[Row]) {}
  explicit NamedEscCommand(const Data& data) : TableEscCommand(esc::kCommands[Row], data) {}

  std::unique_ptr<EscCommand> create(const Data& data) const override {
    try {
      return std::make_unique<NamedEscCommand>(data);
    } catch (const Win32Exception&) {
      return nullptr;
    }
  }
  std::unique_ptr<EscCommand> create() const override { return std::make_unique<NamedEscCommand>(); }
};

using HCopyPaperSizeSetEscCommand = NamedEscCommand<esc::row("HCopyPaperSizeSetEscCommand")>;
using HCopyParameterGetEscCommand = NamedEscCommand<esc::row("HCopyParameterGetEscCommand")>;
using HDevCopyLockEscCommand = NamedEscCommand<esc::row("HDevCopyLockEscCommand")>;
using HDevCopyUnlockEscCommand = NamedEscCommand<esc::row("HDevCopyUnlockEscCommand")>;
using HDevNetworkScanRequestEscCommand = NamedEscCommand<esc::row("HDevNetworkScanRequestEscCommand")>;
using HDevParameterGetEscCommand = NamedEscCommand<esc::row("HDevParameterGetEscCommand")>;
using HDevParameterSetEscCommand = NamedEscCommand<esc::row("HDevParameterSetEscCommand")>;
using HDevScanLockEscCommand = NamedEscCommand<esc::row("HDevScanLockEscCommand")>;
using HDevScanUnlockEscCommand = NamedEscCommand<esc::row("HDevScanUnlockEscCommand")>;
using HScanAbortEscCommand = NamedEscCommand<esc::row("HScanAbortEscCommand")>;
using HScanAdfStatusEscCommand = NamedEscCommand<esc::row("HScanAdfStatusEscCommand")>;
using HScanClippingEscCommand = NamedEscCommand<esc::row("HScanClippingEscCommand")>;
using HScanColorFormatEscCommand = NamedEscCommand<esc::row("HScanColorFormatEscCommand")>;
using HScanDpiEscCommand = NamedEscCommand<esc::row("HScanDpiEscCommand")>;
using HScanGoEscCommand = NamedEscCommand<esc::row("HScanGoEscCommand")>;
using HScanImageFilterEscCommand = NamedEscCommand<esc::row("HScanImageFilterEscCommand")>;
using HScanImageProcessingEscCommand = NamedEscCommand<esc::row("HScanImageProcessingEscCommand")>;
using HScanRawEscCommand = NamedEscCommand<esc::row("HScanRawEscCommand")>;
using HScanExposureTimeEscCommand = NamedEscCommand<esc::row("HScanExposureTimeEscCommand")>;
using HScanOffsetEscCommand = NamedEscCommand<esc::row("HScanOffsetEscCommand")>;
using HScanSizeEscCommand = NamedEscCommand<esc::row("HScanSizeEscCommand")>;
using HScanVersionEscCommand = NamedEscCommand<esc::row("HScanVersionEscCommand")>;
using PCopyDataEscCommand = NamedEscCommand<esc::row("PCopyDataEscCommand")>;
using PDevParameterGetStatusEscCommand = NamedEscCommand<esc::row("PDevParameterGetStatusEscCommand")>;
using PDevNetworkScanStatusEscCommand = NamedEscCommand<esc::row("PDevNetworkScanStatusEscCommand")>;
using PScanDataEscCommand = NamedEscCommand<esc::row("PScanDataEscCommand")>;
using PScanVersionEscCommand = NamedEscCommand<esc::row("PScanVersionEscCommand")>;
using PStatusEscCommand = NamedEscCommand<esc::row("PStatusEscCommand")>;
using HScanSmartEscCommand = NamedEscCommand<esc::row("HScanSmartEscCommand")>;
using HFaxQueryBufferSpaceEscCommand = NamedEscCommand<esc::row("HFaxQueryBufferSpaceEscCommand")>;
using HFaxAbortEscCommand = NamedEscCommand<esc::row("HFaxAbortEscCommand")>;
using HFaxModemDataGetEscCommand = NamedEscCommand<esc::row("HFaxModemDataGetEscCommand")>;
using HFaxModemDataSendEscCommand = NamedEscCommand<esc::row("HFaxModemDataSendEscCommand")>;
using HFaxModemStatusEscCommand = NamedEscCommand<esc::row("HFaxModemStatusEscCommand")>;
using HDevHostNameListSetEscCommand = NamedEscCommand<esc::row("HDevHostNameListSetEscCommand")>;
using HScanStatusGetEscCommand = NamedEscCommand<esc::row("HScanStatusGetEscCommand")>;

}  // namespace qvn
