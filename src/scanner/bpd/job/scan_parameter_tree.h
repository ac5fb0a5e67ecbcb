// The tree of scan parameters in the documents that put a Bpd scanner into host mode and create a job.
#pragma once

#include <cstdint>
#include <memory>

#include "bidi/element/map_elem.h"

namespace qvn {

// Made from the client's job parameters (JobParameterStore); those it has not set are left out.
std::unique_ptr<MapElem> makeScanParameterTree(std::uint32_t clientId);

}  // namespace qvn
