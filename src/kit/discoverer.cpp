#include "qvn/transport/discoverer.h"

namespace qvn {

std::uint32_t Discoverer::discover(const std::string& /*options*/) { return QRN_ERROR_INVALID_FUNCTION; }

std::uint32_t Discoverer::discoverSpecific(const std::string& /*deviceAttributes*/) {
  return QRN_ERROR_SUCCESS;
}

std::uint32_t Discoverer::getDefaults(char* /*buffer*/, std::uint32_t /*size*/, std::uint32_t* /*required*/) {
  return QRN_ERROR_INVALID_FUNCTION;
}

std::uint32_t Discoverer::setDefaults(const char* /*defaults*/) { return QRN_ERROR_INVALID_FUNCTION; }

}  // namespace qvn
