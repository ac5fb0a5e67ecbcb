// The options of one open scanner, as SANE programs see and set them.
#pragma once

#include <sane/sane.h>

#include <array>
#include <string>
#include <vector>

#include "shared/scan/capabilities.h"
#include "shared/scan/settings.h"

namespace qvn::sane {

// SANE counts them from 0; the first tells how many there are.
enum Option : SANE_Int {
  kNumberOfOptions,
  kScanGroup,
  kSource,
  kMode,
  kResolution,
  kGeometryGroup,
  kLeft,
  kTop,
  kRight,
  kBottom,
  kOptionCount,
};

class Options {
 public:
  // They begin with what people want unless they say otherwise.
  explicit Options(const scan::Capabilities& scanner);
  // The descriptors point into this object.
  Options(const Options&) = delete;
  Options& operator=(const Options&) = delete;

  // Null for a number that is no option.
  const SANE_Option_Descriptor* descriptor(SANE_Int option) const;
  // Reads or sets a value, as sane_control_option says; `info` may be null. A number that is not allowed
  // becomes the nearest that is.
  SANE_Status control(SANE_Int option, SANE_Action action, void* value, SANE_Int* info);

  // What the values say. Corners in the wrong order are exchanged.
  scan::Settings settings() const;

 private:
  void describe();
  SANE_Status set(SANE_Int option, const void* value, SANE_Int& info);
  SANE_Status setWord(SANE_Int option, SANE_Word wanted, SANE_Int& info);

  scan::Capabilities scanner_;
  std::array<SANE_Option_Descriptor, kOptionCount> descriptors_{};
  std::array<SANE_Word, kOptionCount> words_{};  // of the options that are numbers
  scan::ColorMode mode_;
  scan::Source source_ = scan::Source::Flatbed;

  // What the descriptors point to.
  std::vector<SANE_String_Const> modeNames_;
  std::vector<SANE_String_Const> sourceNames_;
  std::vector<SANE_Word> resolutions_;
  SANE_Range horizontal_{};
  SANE_Range vertical_{};
};

// The frame that a scan by those settings gives.
SANE_Parameters parametersOf(const scan::Settings& settings);

}  // namespace qvn::sane
