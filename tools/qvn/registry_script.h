// Registry scripts: keys and values of the registry as a text that people read, keep and edit.
// docs/registry-script.md describes the format.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"

namespace qvn {

// One step of a script.
struct RegistryChange {
  enum class Kind { CreateKey, DeleteKey, SetValue, DeleteValue };
  Kind kind;
  std::size_t line;  // 1 is the first
  std::string key;
  std::string name;                 // SetValue and DeleteValue
  platform::registry::Value value;  // SetValue
};

class RegistryScriptError : public std::runtime_error {
 public:
  RegistryScriptError(std::size_t line, const std::string& reason);
};

// The changes that the text asks for, in its order. Throws RegistryScriptError on the first line that is not
// of the format.
std::vector<RegistryChange> parseRegistryScript(std::string_view text);

// Makes all the changes, or none. Answers 0 or why not, with the line of the change that could not be made
// (0 when the transaction itself failed).
platform::ErrorCode applyRegistryChanges(const std::vector<RegistryChange>& changes, std::size_t& failedLine);

// Writes the key with everything below it as a script. 0, or why it cannot be read.
platform::ErrorCode writeRegistryScript(const std::string& key, std::string& text);

}  // namespace qvn
