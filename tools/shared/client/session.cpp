#include "shared/client/session.h"

#include "qvn/qvn.h"
#include "shared/client/failure.h"

namespace qvn::cli {

Session::Session() {
  require(QvnInitialize(), "cannot initialise the library");
  QvnGetClientId(&client_);
}

Session::~Session() { QvnUninitialize(); }

}  // namespace qvn::cli
