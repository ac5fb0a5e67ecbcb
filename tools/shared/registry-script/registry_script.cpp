#include "shared/registry-script/registry_script.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <limits>
#include <system_error>

#include "platform/files/paths.h"
#include "platform/process/module.h"

namespace qvn {

namespace registry = platform::registry;
using platform::ErrorCode;
using platform::kFileNotFound;
using platform::kSuccess;

namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";

// ---- Reading ----------------------------------------------------------------------------------

// The length of the well-formed UTF-8 character that the text begins with; 0 when it is not one.
std::size_t utf8Length(std::string_view text) {
  struct Form {
    std::size_t length;
    char32_t smallest;
    unsigned char mask, lead;
  };
  constexpr Form kForms[] = {
      {1, 0, 0x80, 0x00}, {2, 0x80, 0xE0, 0xC0}, {3, 0x800, 0xF0, 0xE0}, {4, 0x10000, 0xF8, 0xF0}};
  const auto first = static_cast<unsigned char>(text.front());
  for (const Form& form : kForms) {
    if ((first & form.mask) != form.lead) {
      continue;
    }
    if (text.size() < form.length) {
      return 0;
    }
    char32_t code = first & static_cast<unsigned char>(~form.mask);
    for (std::size_t i = 1; i < form.length; ++i) {
      const auto next = static_cast<unsigned char>(text[i]);
      if ((next & 0xC0) != 0x80) {
        return 0;
      }
      code = code << 6 | (next & 0x3F);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < form.smallest || code > 0x10FFFF || surrogate ? 0 : form.length;
  }
  return 0;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Reads one line of a script from left to right.
class LineReader {
 public:
  LineReader(std::string_view line, std::size_t number) : rest_(trimmed(line)), number_(number) {
    for (std::string_view text = line; !text.empty();) {
      const std::size_t length = utf8Length(text);
      if (length == 0) {
        fail("this is not UTF-8");
      }
      text.remove_prefix(length);
    }
  }

  [[noreturn]] void fail(const std::string& reason) const { throw RegistryScriptError(number_, reason); }

  bool atEnd() const { return rest_.empty(); }
  bool skip(std::string_view expected) {
    if (!rest_.starts_with(expected)) {
      return false;
    }
    rest_.remove_prefix(expected.size());
    return true;
  }
  void skipBlanks() { rest_ = trimmed(rest_); }

  // A text in double quotes, with its escapes resolved.
  std::string quoted() {
    if (!skip("\"")) {
      fail("a text in double quotes is missing");
    }
    std::string text;
    while (!rest_.empty() && rest_.front() != '"') {
      if (skip("\\")) {
        text += escaped();
      } else {
        text += rest_.front();
        rest_.remove_prefix(1);
      }
    }
    if (!skip("\"")) {
      fail("the closing double quote is missing");
    }
    return text;
  }

  // The path between brackets.
  std::string bracketed() {
    const std::size_t end = rest_.rfind(']');
    if (end == std::string_view::npos) {
      fail("the closing bracket is missing");
    }
    if (end + 1 != rest_.size()) {
      fail("nothing may follow the closing bracket");
    }
    std::string path(rest_.substr(0, end));
    rest_ = {};
    return path;
  }

  std::string dword() {
    std::uint32_t number = 0;
    const auto [stopped, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number, 16);
    if (error != std::errc() || stopped != rest_.data() + rest_.size()) {
      fail("dword: is followed by 1 to 8 hexadecimal digits");
    }
    rest_ = {};
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) {
      bytes.push_back(static_cast<char>(number >> shift & 0xFF));
    }
    return bytes;
  }

  std::string hexBytes() {
    std::string bytes;
    while (!atEnd()) {
      if (!bytes.empty() && !skip(",")) {
        fail("the bytes after hex: are separated by commas");
      }
      skipBlanks();
      bytes.push_back(hexByte("hex: is followed by bytes of two hexadecimal digits"));
      skipBlanks();
    }
    return bytes;
  }

 private:
  char hexByte(const char* otherwise) {
    std::uint8_t byte = 0;
    if (rest_.size() < 2) {
      fail(otherwise);
    }
    const auto [stopped, error] = std::from_chars(rest_.data(), rest_.data() + 2, byte, 16);
    if (error != std::errc() || stopped != rest_.data() + 2) {
      fail(otherwise);
    }
    rest_.remove_prefix(2);
    return static_cast<char>(byte);
  }

  // What follows a backslash.
  char escaped() {
    constexpr std::pair<std::string_view, char> kEscapes[] = {
        {"\\", '\\'}, {"\"", '"'}, {"n", '\n'}, {"r", '\r'}, {"t", '\t'}};
    for (const auto& [letter, character] : kEscapes) {
      if (skip(letter)) {
        return character;
      }
    }
    if (skip("x")) {
      return hexByte("\\x is followed by two hexadecimal digits");
    }
    fail("a backslash is followed by \\ \" n r t or x");
  }

  std::string_view rest_;
  std::size_t number_;
};

// Names of roots as other systems' scripts have them; here they would become keys that nobody reads.
bool startsWithRoot(std::string_view path) {
  constexpr std::string_view kRoots = "HKEY_";
  return path.size() >= kRoots.size() &&
         std::equal(kRoots.begin(), kRoots.end(), path.begin(),
                    [](char root, char c) { return root == std::toupper(static_cast<unsigned char>(c)); });
}

std::string keyPath(LineReader& line) {
  std::string path = line.bracketed();
  if (startsWithRoot(path)) {
    line.fail("a key is named from below the root, as in [Software\\Name]");
  }
  if (path.empty() || path.front() == '\\' || path.back() == '\\' || path.find("\\\\") != std::string::npos) {
    line.fail("a key is one or more names with a single backslash between two");
  }
  if (path.size() > registry::kMaxPath) {
    line.fail("a key's path has at most " + std::to_string(registry::kMaxPath) + " bytes");
  }
  return path;
}

RegistryChange valueChange(LineReader& line, std::size_t number, const std::string& key) {
  RegistryChange change{RegistryChange::Kind::SetValue, number, key, line.quoted(), {}};
  if (change.name.empty() || change.name.size() > registry::kMaxName) {
    line.fail("a value's name has 1 to " + std::to_string(registry::kMaxName) + " bytes");
  }
  line.skipBlanks();
  if (line.skip("?")) {
    change.kind = RegistryChange::Kind::SetMissingValue;
  }
  if (!line.skip("=")) {
    line.fail("an equals sign is missing after the value's name");
  }
  line.skipBlanks();
  if (change.kind == RegistryChange::Kind::SetValue && line.skip("-")) {
    change.kind = RegistryChange::Kind::DeleteValue;
  } else if (line.skip("dword:")) {
    change.value = {registry::ValueType::Dword, line.dword()};
  } else if (line.skip("hex:")) {
    change.value = {registry::ValueType::Binary, line.hexBytes()};
  } else {
    change.value = {registry::ValueType::String, line.quoted()};
  }
  if (!line.atEnd()) {
    line.fail("nothing may follow the value");
  }
  return change;
}

// ---- Applying ---------------------------------------------------------------------------------

ErrorCode deleteTree(const registry::Key& parent, const std::string& path) {
  registry::Key key;
  ErrorCode error = registry::openSubkey(parent, path, key);
  std::vector<std::string> names;
  if (error == kSuccess) {
    error = registry::listSubkeys(key, std::numeric_limits<std::size_t>::max(), names);
  }
  for (std::size_t i = 0; error == kSuccess && i < names.size(); ++i) {
    error = deleteTree(key, names[i]);
  }
  return error == kSuccess ? registry::deleteKey(parent, path) : error;
}

// Splits off the last name, since a key is deleted through the one above it.
ErrorCode deleteTree(const std::string& path) {
  const std::size_t backslash = path.rfind('\\');
  registry::Key parent;
  const std::string above = backslash == std::string::npos ? "" : path.substr(0, backslash);
  const std::string last = backslash == std::string::npos ? path : path.substr(backslash + 1);
  const ErrorCode error = registry::openKey(registry::Hive::LocalMachine, above, parent);
  return error == kSuccess ? deleteTree(parent, last) : error;
}

ErrorCode setValue(const RegistryChange& change) {
  registry::Key key;
  registry::Value present;
  ErrorCode error = registry::openKey(registry::Hive::LocalMachine, change.key, key);
  if (error == kSuccess && change.kind == RegistryChange::Kind::SetMissingValue) {
    error = registry::getValue(key, change.name, present);
    if (error != kFileNotFound) {
      return error;
    }
    error = kSuccess;
  }
  return error == kSuccess ? registry::setValue(key, change.name, change.value.type, change.value.data)
                           : error;
}

ErrorCode apply(const RegistryChange& change) {
  registry::Key key;
  ErrorCode error = kSuccess;
  switch (change.kind) {
    case RegistryChange::Kind::CreateKey:
      return registry::createKey(registry::Hive::LocalMachine, change.key, {true, true}, key);
    case RegistryChange::Kind::DeleteKey:
      error = deleteTree(change.key);
      return error == kFileNotFound ? kSuccess : error;
    case RegistryChange::Kind::SetValue:
    case RegistryChange::Kind::SetMissingValue:
      return setValue(change);
    case RegistryChange::Kind::DeleteValue:
      error = registry::openKey(registry::Hive::LocalMachine, change.key, key);
      error = error == kSuccess ? registry::deleteValue(key, change.name) : error;
      return error == kFileNotFound ? kSuccess : error;
  }
  return platform::kInvalidParameter;
}

// ---- Writing ----------------------------------------------------------------------------------

std::string quote(std::string_view text) {
  std::string quoted = "\"";
  while (!text.empty()) {
    const auto byte = static_cast<unsigned char>(text.front());
    const std::size_t length = byte < 0x20 || byte == 0x7F ? 0 : utf8Length(text);
    if (byte == '\\' || byte == '"') {
      quoted += '\\';
      quoted += text.front();
    } else if (length == 0) {
      quoted += "\\x";
      quoted += kHexDigits[byte >> 4];
      quoted += kHexDigits[byte & 0x0F];
    } else {
      quoted += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return quoted + '"';
}

// Bytes as digits, in the order given.
template <typename Bytes>
std::string digits(const Bytes& bytes, std::string_view separator) {
  std::string text;
  for (const char character : bytes) {
    const auto byte = static_cast<unsigned char>(character);
    text += text.empty() ? "" : separator;
    text += kHexDigits[byte >> 4];
    text += kHexDigits[byte & 0x0F];
  }
  return text;
}

std::string valueText(registry::ValueType type, std::string_view data) {
  switch (type) {
    case registry::ValueType::Dword:
      return "dword:" + digits(std::string(data.rbegin(), data.rend()), "");
    case registry::ValueType::Binary:
      return "hex:" + digits(data, ",");
    case registry::ValueType::String:
      break;
  }
  return quote(data);
}

ErrorCode writeTree(const registry::Key& key, const std::string& path, std::string& text) {
  text += (text.empty() ? "[" : "\n[") + path + "]\n";
  ErrorCode error = registry::forEachValue(
      key, [&](std::string_view name, registry::ValueType type, std::string_view data) {
        text += quote(name) + "=" + valueText(type, data) + "\n";
      });
  std::vector<std::string> names;
  if (error == kSuccess) {
    error = registry::listSubkeys(key, std::numeric_limits<std::size_t>::max(), names);
  }
  for (std::size_t i = 0; error == kSuccess && i < names.size(); ++i) {
    registry::Key subkey;
    error = registry::openSubkey(key, names[i], subkey);
    if (error == kSuccess) {
      error = writeTree(subkey, path + "\\" + names[i], text);
    } else if (error == kFileNotFound) {
      error = kSuccess;  // deleted since it was listed
    }
  }
  return error;
}

}  // namespace

RegistryScriptError::RegistryScriptError(std::size_t line, const std::string& reason)
    : std::runtime_error("line " + std::to_string(line) + ": " + reason) {}

std::filesystem::path findRegistryScript(std::string_view path) {
  std::error_code ignored;
  std::filesystem::path own = platform::nativePath(path);
  if (std::filesystem::exists(std::filesystem::symlink_status(own, ignored))) {
    return own;
  }
  return platform::installedDirectory() / own.filename();
}

std::string readRegistryScript(std::istream& in) {
  constexpr std::size_t kBlock = std::size_t{1} << 20;
  std::string text;
  while (in && text.size() <= kMaxRegistryScriptSize) {
    const std::size_t before = text.size();
    text.resize(before + kBlock);
    in.read(text.data() + before, kBlock);
    text.resize(before + static_cast<std::size_t>(in.gcount()));
  }
  if (in.bad()) {
    throw std::system_error(errno, std::generic_category());
  }
  if (text.size() > kMaxRegistryScriptSize) {
    const auto lines = std::count(text.begin(), text.end(), '\n');
    throw RegistryScriptError(static_cast<std::size_t>(lines) + 1, "a script has at most 64 MiB");
  }
  return text;
}

std::vector<RegistryChange> parseRegistryScript(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) {
    text.remove_prefix(kByteOrderMark.size());
  }
  std::vector<RegistryChange> changes;
  std::string key;  // the one that values belong to; empty outside any
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = text.find('\n');
    LineReader line(text.substr(0, end), number);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.atEnd() || line.skip("#")) {
      continue;
    }
    if (line.skip("[-")) {
      changes.push_back({RegistryChange::Kind::DeleteKey, number, keyPath(line), {}, {}});
      key.clear();
    } else if (line.skip("[")) {
      key = keyPath(line);
      changes.push_back({RegistryChange::Kind::CreateKey, number, key, {}, {}});
    } else if (key.empty()) {
      line.fail("a value stands below its key; there is none yet");
    } else {
      changes.push_back(valueChange(line, number, key));
    }
  }
  return changes;
}

ErrorCode applyRegistryChanges(const std::vector<RegistryChange>& changes, std::size_t& failedLine) {
  failedLine = 0;
  return registry::transaction([&] {
    for (const RegistryChange& change : changes) {
      if (const ErrorCode error = apply(change); error != kSuccess) {
        failedLine = change.line;
        return error;
      }
    }
    return kSuccess;
  });
}

ErrorCode writeRegistryScript(const std::string& key, std::string& text) {
  registry::Key opened;
  const ErrorCode error = registry::openKey(registry::Hive::LocalMachine, key, opened);
  return error == kSuccess ? writeTree(opened, key, text) : error;
}

}  // namespace qvn
