// What the exported functions of clients forward to.
#include "api/client_id.h"
#include "api/system.h"
#include "qvn/result_codes.h"

namespace qvn {

std::uint32_t System::qvnGetClientId(std::uint32_t& clientId) {
  clientId = nextClientId();
  return QRN_ERROR_SUCCESS;
}

std::uint32_t System::qvnSetClientInfo() { return QRN_ERROR_SUCCESS; }

}  // namespace qvn
