#include "platform/base/number.h"

#include <locale.h>
#include <stdlib.h>

namespace qvn::platform {

double toDouble(const char* text) {
  // There without being loaded; kept, as texts are read until the process ends.
  static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
  return strtod_l(text, nullptr, cLocale);
}

}  // namespace qvn::platform
