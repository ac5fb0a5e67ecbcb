// Discoverer: finds the devices that a transport reaches and tells its observers of each.
#pragma once

#include <cstdint>
#include <string>

#include "qvn/result_codes.h"
#include "qvn/transport/subject.h"

namespace qvn {

// Each device found is told as notify(text), the text being the device's attribute text, on whatever thread
// the transport likes, before the discovery returns. Lives as long as its module is loaded.
//
// The order of the virtual operations is part of the interface between the library and its plug-ins.
class Discoverer : public Subject {
 public:
  ~Discoverer() override = default;

  // Finds devices; what the options say is the transport's matter. 0 also when there are none. Here: 1.
  virtual std::uint32_t discover(const std::string& options);

  // Finds the one device that an attribute text describes, to tell what has changed about it. Here: 0.
  virtual std::uint32_t discoverSpecific(const std::string& deviceAttributes);

  // The defaults that discover uses, as a text with its terminator: `required` is the size it needs, 122 when
  // `size` is smaller. Here: 1.
  virtual std::uint32_t getDefaults(char* buffer, std::uint32_t size, std::uint32_t* required);
  virtual std::uint32_t setDefaults(const char* defaults);
};

}  // namespace qvn
