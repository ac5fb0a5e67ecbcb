// Registry scripts as people write them: what is understood keeps to the registry's limits, all else is
// refused with the line that is wrong.
#include <algorithm>
#include <cstdint>
#include <string_view>

#include "fuzz/check.h"
#include "shared/registry-script/registry_script.h"

namespace registry = qvn::platform::registry;
using qvn::RegistryChange;

namespace {

void checkChange(const RegistryChange& change, std::size_t lines) {
  QVN_FUZZ_CHECK(change.line >= 1 && change.line <= lines);
  QVN_FUZZ_CHECK(!change.key.empty() && change.key.size() <= registry::kMaxPath);
  const bool sets =
      change.kind == RegistryChange::Kind::SetValue || change.kind == RegistryChange::Kind::SetMissingValue;
  if (sets || change.kind == RegistryChange::Kind::DeleteValue) {
    QVN_FUZZ_CHECK(!change.name.empty() && change.name.size() <= registry::kMaxName);
  }
  if (sets && change.value.type == registry::ValueType::Dword) {
    QVN_FUZZ_CHECK(change.value.data.size() == 4);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
  try {
    for (const RegistryChange& change : qvn::parseRegistryScript(text)) checkChange(change, lines);
  } catch (const qvn::RegistryScriptError& error) {
    QVN_FUZZ_CHECK(std::string_view(error.what()).starts_with("line "));
  }
  return 0;
}
