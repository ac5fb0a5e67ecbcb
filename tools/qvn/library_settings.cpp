#include "library_settings.h"

#include "qvn/transport/settings.h"
#include "shared/client/failure.h"

namespace qvn::cli {

namespace registry = platform::registry;

namespace {

std::string inQuotes(std::string_view key, std::string_view name) {
  return "'" + std::string(key) + (key.ends_with('\\') ? "" : "\\") + std::string(name) + "'";
}

// The sentence says what is wrong with the registry itself, when something is.
void requireRegistry(platform::ErrorCode error, const std::string& sentence) {
  const std::string reason = error != platform::kSuccess ? registry::lastFailure() : "";
  require(error, reason.empty() ? sentence : sentence + ": " + reason);
}

}  // namespace

std::string libraryKey(std::string_view key) { return std::string(kLibraryRegistryRoot) + std::string(key); }

std::optional<registry::Value> readLibraryValue(std::string_view key, std::string_view name) {
  registry::Key opened;
  registry::Value value;
  platform::ErrorCode error = registry::openKey(registry::Hive::LocalMachine, libraryKey(key), opened);
  if (error == platform::kSuccess) {
    error = registry::getValue(opened, name, value);
  }
  if (error == platform::kFileNotFound) {
    return std::nullopt;
  }
  requireRegistry(error, "cannot read " + inQuotes(key, name) + " from the registry");
  return value;
}

std::uint32_t numberSetting(const LongSetting& setting) {
  const auto value = readLibraryValue(setting.key, setting.name);
  return value ? registry::dwordOf(value->type, value->data).value_or(setting.byDefault) : setting.byDefault;
}

registry::Key makeLibraryKey(std::string_view key) {
  registry::Key made;
  requireRegistry(registry::createKey(registry::Hive::LocalMachine, libraryKey(key), {true, true}, made),
                  "cannot make the key '" + std::string(key) + "' of the registry");
  return made;
}

void writeLibraryValue(std::string_view key, std::string_view name, const registry::Value& value) {
  requireRegistry(registry::setValue(makeLibraryKey(key), name, value.type, value.data),
                  "cannot write " + inQuotes(key, name) + " to the registry");
}

bool removeLibraryValue(std::string_view key, std::string_view name) {
  if (!readLibraryValue(key, name)) return false;
  requireRegistry(registry::deleteValue(makeLibraryKey(key), name),
                  "cannot delete " + inQuotes(key, name) + " from the registry");
  return true;
}

std::vector<std::pair<std::string, registry::Value>> listLibraryValues(std::string_view key) {
  std::vector<std::pair<std::string, registry::Value>> values;
  registry::Key opened;
  platform::ErrorCode error = registry::openKey(registry::Hive::LocalMachine, libraryKey(key), opened);
  if (error == platform::kFileNotFound) {
    return values;
  }
  if (error == platform::kSuccess) {
    error = registry::forEachValue(
        opened, [&](std::string_view name, registry::ValueType type, std::string_view data) {
          values.emplace_back(std::string(name), registry::Value{type, std::string(data)});
        });
  }
  requireRegistry(error, "cannot read the key '" + std::string(key) + "' of the registry");
  return values;
}

}  // namespace qvn::cli
