#include "device/kept_connection.h"

namespace qvn {

void KeptConnection::end(bool isInUse) noexcept {
  if (!connection_) return;
  const Connection connection = std::exchange(connection_, {});
  try {
    device_->doPersistConnection(connection, false);
  } catch (...) {
    // It could not be logged.
  }
  if (!isInUse) connection.release();
}

}  // namespace qvn
