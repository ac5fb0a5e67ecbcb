#include "session.h"

#include "failure.h"
#include "qvn/qvn.h"

namespace qvn::cli {

Session::Session() {
  require(QvnInitialize(), "cannot initialise the library");
  QvnGetClientId(&client_);
}

Session::~Session() { QvnUninitialize(); }

}  // namespace qvn::cli
