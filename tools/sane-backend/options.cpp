#include "options.h"

#include <sane/saneopts.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace qvn::sane {

namespace {

constexpr char kFlatbedName[] = "Flatbed";
constexpr char kFeederName[] = "ADF";

const char* modeName(scan::ColorMode mode) {
  switch (mode) {
    case scan::ColorMode::BlackAndWhite:
      return SANE_VALUE_SCAN_MODE_LINEART;
    case scan::ColorMode::Gray:
      return SANE_VALUE_SCAN_MODE_GRAY;
    case scan::ColorMode::Color:
      break;
  }
  return SANE_VALUE_SCAN_MODE_COLOR;
}

const char* sourceName(scan::Source source) {
  return source == scan::Source::Feeder ? kFeederName : kFlatbedName;
}

// The room that the longest of the texts takes, its end included.
SANE_Int roomFor(const std::vector<SANE_String_Const>& texts) {
  std::size_t longest = 0;
  for (const SANE_String_Const text : texts) {
    if (text != nullptr) longest = std::max(longest, std::strlen(text) + 1);
  }
  return static_cast<SANE_Int>(longest);
}

SANE_Word millimetres(std::uint32_t units) { return SANE_FIX(units / scan::kUnitsPerMillimetre); }

std::uint32_t units(SANE_Word millimetres, std::uint32_t most) {
  const long rounded = std::lround(SANE_UNFIX(millimetres) * scan::kUnitsPerMillimetre);
  return static_cast<std::uint32_t>(std::clamp<long>(rounded, 0, static_cast<long>(most)));
}

SANE_Option_Descriptor group(SANE_String_Const name, SANE_String_Const title, SANE_String_Const text) {
  return {name, title, text, SANE_TYPE_GROUP, SANE_UNIT_NONE, 0, 0, SANE_CONSTRAINT_NONE, {nullptr}};
}

SANE_Option_Descriptor oneOf(SANE_String_Const name, SANE_String_Const title, SANE_String_Const text,
                             const std::vector<SANE_String_Const>& texts) {
  SANE_Option_Descriptor option = {name,
                                   title,
                                   text,
                                   SANE_TYPE_STRING,
                                   SANE_UNIT_NONE,
                                   roomFor(texts),
                                   SANE_CAP_SOFT_SELECT | SANE_CAP_SOFT_DETECT,
                                   SANE_CONSTRAINT_STRING_LIST,
                                   {nullptr}};
  option.constraint.string_list = texts.data();
  return option;
}

SANE_Option_Descriptor length(SANE_String_Const name, SANE_String_Const title, SANE_String_Const text,
                              const SANE_Range& range) {
  SANE_Option_Descriptor option = {name,
                                   title,
                                   text,
                                   SANE_TYPE_FIXED,
                                   SANE_UNIT_MM,
                                   sizeof(SANE_Word),
                                   SANE_CAP_SOFT_SELECT | SANE_CAP_SOFT_DETECT,
                                   SANE_CONSTRAINT_RANGE,
                                   {nullptr}};
  option.constraint.range = &range;
  return option;
}

}  // namespace

Options::Options(const scan::Capabilities& scanner) : scanner_(scanner) {
  const scan::Settings defaults = scanner.defaults();
  mode_ = defaults.mode;
  horizontal_ = {0, millimetres(scanner.width), 0};
  vertical_ = {0, millimetres(scanner.height), 0};
  words_[kNumberOfOptions] = kOptionCount;
  words_[kResolution] = static_cast<SANE_Word>(defaults.dpi);
  words_[kRight] = horizontal_.max;
  words_[kBottom] = vertical_.max;

  for (const scan::ColorMode mode : scanner.modes) modeNames_.push_back(modeName(mode));
  modeNames_.push_back(nullptr);
  sourceNames_.push_back(kFlatbedName);
  if (scanner.feeder) sourceNames_.push_back(kFeederName);
  sourceNames_.push_back(nullptr);
  resolutions_.push_back(static_cast<SANE_Word>(scanner.resolutions.size()));
  for (const std::uint32_t dpi : scanner.resolutions) resolutions_.push_back(static_cast<SANE_Word>(dpi));
  describe();
}

void Options::describe() {
  descriptors_[kNumberOfOptions] = {SANE_NAME_NUM_OPTIONS, SANE_TITLE_NUM_OPTIONS, SANE_DESC_NUM_OPTIONS,
                                    SANE_TYPE_INT,         SANE_UNIT_NONE,         sizeof(SANE_Word),
                                    SANE_CAP_SOFT_DETECT,  SANE_CONSTRAINT_NONE,   {nullptr}};
  descriptors_[kScanGroup] = group(SANE_NAME_STANDARD, SANE_TITLE_STANDARD, SANE_DESC_STANDARD);
  descriptors_[kSource] =
      oneOf(SANE_NAME_SCAN_SOURCE, SANE_TITLE_SCAN_SOURCE, SANE_DESC_SCAN_SOURCE, sourceNames_);
  descriptors_[kMode] = oneOf(SANE_NAME_SCAN_MODE, SANE_TITLE_SCAN_MODE, SANE_DESC_SCAN_MODE, modeNames_);
  descriptors_[kResolution] = {SANE_NAME_SCAN_RESOLUTION,
                               SANE_TITLE_SCAN_RESOLUTION,
                               SANE_DESC_SCAN_RESOLUTION,
                               SANE_TYPE_INT,
                               SANE_UNIT_DPI,
                               sizeof(SANE_Word),
                               SANE_CAP_SOFT_SELECT | SANE_CAP_SOFT_DETECT,
                               SANE_CONSTRAINT_WORD_LIST,
                               {nullptr}};
  descriptors_[kResolution].constraint.word_list = resolutions_.data();
  descriptors_[kGeometryGroup] = group(SANE_NAME_GEOMETRY, SANE_TITLE_GEOMETRY, SANE_DESC_GEOMETRY);
  descriptors_[kLeft] = length(SANE_NAME_SCAN_TL_X, SANE_TITLE_SCAN_TL_X, SANE_DESC_SCAN_TL_X, horizontal_);
  descriptors_[kTop] = length(SANE_NAME_SCAN_TL_Y, SANE_TITLE_SCAN_TL_Y, SANE_DESC_SCAN_TL_Y, vertical_);
  descriptors_[kRight] = length(SANE_NAME_SCAN_BR_X, SANE_TITLE_SCAN_BR_X, SANE_DESC_SCAN_BR_X, horizontal_);
  descriptors_[kBottom] = length(SANE_NAME_SCAN_BR_Y, SANE_TITLE_SCAN_BR_Y, SANE_DESC_SCAN_BR_Y, vertical_);
}

const SANE_Option_Descriptor* Options::descriptor(SANE_Int option) const {
  if (option < 0 || option >= kOptionCount) return nullptr;
  return &descriptors_[static_cast<std::size_t>(option)];
}

SANE_Status Options::control(SANE_Int option, SANE_Action action, void* value, SANE_Int* info) {
  SANE_Int told = 0;
  if (info == nullptr) info = &told;
  *info = 0;
  const SANE_Option_Descriptor* const described = descriptor(option);
  if (described == nullptr || described->type == SANE_TYPE_GROUP || value == nullptr)
    return SANE_STATUS_INVAL;
  if (action == SANE_ACTION_SET_VALUE) {
    if (!SANE_OPTION_IS_SETTABLE(described->cap)) return SANE_STATUS_INVAL;
    return set(option, value, *info);
  }
  if (action != SANE_ACTION_GET_VALUE) return SANE_STATUS_UNSUPPORTED;
  if (described->type == SANE_TYPE_STRING) {
    std::snprintf(static_cast<SANE_String>(value), static_cast<std::size_t>(described->size), "%s",
                  option == kMode ? modeName(mode_) : sourceName(source_));
  } else {
    *static_cast<SANE_Word*>(value) = words_[static_cast<std::size_t>(option)];
  }
  return SANE_STATUS_GOOD;
}

SANE_Status Options::set(SANE_Int option, const void* value, SANE_Int& info) {
  if (option != kMode && option != kSource)
    return setWord(option, *static_cast<const SANE_Word*>(value), info);
  const std::string name = static_cast<SANE_String_Const>(value);
  if (option == kSource) {
    if (name != kFlatbedName && (name != kFeederName || !scanner_.feeder)) return SANE_STATUS_INVAL;
    source_ = name == kFeederName ? scan::Source::Feeder : scan::Source::Flatbed;
    return SANE_STATUS_GOOD;
  }
  const auto mode = std::find_if(scanner_.modes.begin(), scanner_.modes.end(),
                                 [&](scan::ColorMode one) { return name == modeName(one); });
  if (mode == scanner_.modes.end()) return SANE_STATUS_INVAL;
  mode_ = *mode;
  info = SANE_INFO_RELOAD_PARAMS;
  return SANE_STATUS_GOOD;
}

SANE_Status Options::setWord(SANE_Int option, SANE_Word wanted, SANE_Int& info) {
  SANE_Word allowed = 0;
  if (option == kResolution) {
    // The list begins with its length.
    allowed = *std::min_element(resolutions_.begin() + 1, resolutions_.end(), [&](SANE_Word a, SANE_Word b) {
      return std::llabs(static_cast<long long>(a) - wanted) < std::llabs(static_cast<long long>(b) - wanted);
    });
  } else {
    const SANE_Range& range = *descriptor(option)->constraint.range;
    allowed = std::clamp(wanted, range.min, range.max);
  }
  words_[static_cast<std::size_t>(option)] = allowed;
  info = SANE_INFO_RELOAD_PARAMS | (allowed != wanted ? SANE_INFO_INEXACT : 0);
  return SANE_STATUS_GOOD;
}

scan::Settings Options::settings() const {
  const auto [left, right] =
      std::minmax({units(words_[kLeft], scanner_.width), units(words_[kRight], scanner_.width)});
  const auto [top, bottom] =
      std::minmax({units(words_[kTop], scanner_.height), units(words_[kBottom], scanner_.height)});
  scan::Settings settings;
  settings.dpi = static_cast<std::uint32_t>(words_[kResolution]);
  settings.mode = mode_;
  settings.source = source_;
  settings.area = {left, top, right - left, bottom - top};
  return settings;
}

SANE_Parameters parametersOf(const scan::Settings& settings) {
  const scan::PageSize size = scan::pageSize(settings);
  SANE_Parameters parameters = {};
  parameters.format = settings.mode == scan::ColorMode::Color ? SANE_FRAME_RGB : SANE_FRAME_GRAY;
  parameters.last_frame = SANE_TRUE;
  parameters.depth = settings.mode == scan::ColorMode::BlackAndWhite ? 1 : 8;
  parameters.pixels_per_line = static_cast<SANE_Int>(size.dots);
  parameters.bytes_per_line = static_cast<SANE_Int>(size.bytesPerLine);
  parameters.lines = static_cast<SANE_Int>(size.lines);
  return parameters;
}

}  // namespace qvn::sane
