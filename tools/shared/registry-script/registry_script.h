// Registry scripts: keys and values of the registry as a text that people read, keep and edit.
// docs/registry-script.md describes the format.
#pragma once

#include <cstddef>
#include <filesystem>
#include <istream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/error.h"
#include "platform/registry/registry.h"

namespace qvn {

// One step of a script.
struct RegistryChange {
  enum class Kind { CreateKey, DeleteKey, SetValue, SetMissingValue, DeleteValue };
  Kind kind;
  std::size_t line;  // 1 is the first
  std::string key;
  std::string name;                 // of the value
  platform::registry::Value value;  // what it is set to
};

class RegistryScriptError : public std::runtime_error {
 public:
  RegistryScriptError(std::size_t line, const std::string& reason);
};

inline constexpr std::size_t kMaxRegistryScriptSize = std::size_t{64} << 20;

// The file of a script that is named in the vocabulary of nativePath (platform/files/paths.h): this machine's
// own in the state directory, else the one of that file name that was installed with the library.
std::filesystem::path findRegistryScript(std::string_view path);

// The whole text. Throws RegistryScriptError when it is longer than kMaxRegistryScriptSize, std::system_error
// when it cannot be read.
std::string readRegistryScript(std::istream& in);

// The changes that the text asks for, in its order. Throws RegistryScriptError on the first line that is not
// of the format.
std::vector<RegistryChange> parseRegistryScript(std::string_view text);

// Makes all the changes, or none. Answers 0 or why not, with the line of the change that could not be made
// (0 when the transaction itself failed).
platform::ErrorCode applyRegistryChanges(const std::vector<RegistryChange>& changes, std::size_t& failedLine);

// Writes the key with everything below it as a script. 0, or why it cannot be read.
platform::ErrorCode writeRegistryScript(const std::string& key, std::string& text);

}  // namespace qvn
