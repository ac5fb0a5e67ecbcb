// The backend without a job: the printers that queues can be made for.
#pragma once

#include "shared/client/session.h"

namespace qvn::cups {

// Lets the transports look for printers where they look by default and lists what is stored on standard
// output, one printer a line, as the scheduler reads it.
void listDevices(const cli::Session& session);

}  // namespace qvn::cups
