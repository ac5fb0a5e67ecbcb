// The tree of scan parameters that hosts send with a job.
#pragma once

#include "documents/element.h"
#include "page/scan_settings.h"

namespace sim {

// Throws Refusal when the tree is not as it should be, or asks for what cannot be.
ScanSettings readScanParameters(const Element& tree);

}  // namespace sim
