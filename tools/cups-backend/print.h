// One job of the scheduler on one printer, from the lookup of the port to the job's end.
#pragma once

#include "job.h"
#include "report.h"
#include "shared/client/session.h"

namespace qvn::cups {

// Returns the exit code of the backend (cups/backend.h); what went wrong has been reported.
int printJob(const cli::Session& session, const Job& job, Report& report);

}  // namespace qvn::cups
