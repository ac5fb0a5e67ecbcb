// What a printer says of itself: its device id (IEEE 1284, GET_DEVICE_ID of the printer class), a text of
// keys and values: "MFG:Acme;MDL:Jet 3;CMD:PJL,PCL;".
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace qvn::usb1 {

// What is missing is empty. Texts are printable ASCII without < and >, of at most 63 characters.
struct DeviceId {
  std::string model;       // MDL, MODEL
  std::string serial;      // SN, SERN, SERIALNUMBER
  std::string family;      // FAM: what the library calls the device; empty when it is none of its printers
  bool speaksNpa = false;  // NPA or NPAP among the commands, CMD or COMMAND SET (IEEE 1284.1)
};

// Of what came for GET_DEVICE_ID. The two bytes in front are the length, the highest first, those bytes
// counted; one that is wrong, in the wrong order or missing is as good: the text is what there is.
DeviceId parseDeviceId(std::span<const std::uint8_t> answer);

}  // namespace qvn::usb1
