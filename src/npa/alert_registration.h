// The commands that tell the printer which alerts to send: each owns some bits of the clients' alert mask and
// turns them into its parameter bytes.
#pragma once

#include <cstdint>
#include <span>

#include "npa/npa_command.h"

namespace qvn {

// One line of a command's table: this mask bit sets this bit of that packet byte.
struct AlertBit {
  std::uint32_t maskBit;
  std::uint8_t offset;
  std::uint8_t packetBit;
};

class AlertRegistrationCommand : public NpaCommand {
 public:
  // Whether a bit that this command owns differs between the masks, so that the command must be sent.
  virtual bool bidiRequired(std::uint32_t newMask, std::uint32_t oldMask) const;
  // Clears the bytes that the command owns and sets the bits of the mask.
  virtual void setMask(std::uint32_t mask);

 protected:
  AlertRegistrationCommand(const char* className, std::span<const std::uint8_t> packetTemplate,
                           std::span<const AlertBit> bits);

 private:
  const char* className_;
  std::span<const AlertBit> bits_;
};

class RegisterForDeviceStatusAlertsCommand : public AlertRegistrationCommand {
 public:
  RegisterForDeviceStatusAlertsCommand();
};

class RegisterForQuorinExtensionAlertsCommand : public AlertRegistrationCommand {
 public:
  RegisterForQuorinExtensionAlertsCommand();
};

class RegisterForPanelAlertsCommand : public AlertRegistrationCommand {
 public:
  RegisterForPanelAlertsCommand();
};

class RegisterForQuorinExtendedAlertsCommand : public AlertRegistrationCommand {
 public:
  RegisterForQuorinExtendedAlertsCommand();
};

class RegisterForQuorinExtendedAlertsWithLanguageIdCommand : public AlertRegistrationCommand {
 public:
  RegisterForQuorinExtendedAlertsWithLanguageIdCommand();
};

}  // namespace qvn
