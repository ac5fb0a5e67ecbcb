#include "kit/tag_map.h"

#include <cstring>

namespace qvn {
namespace {

struct Element {
  std::string_view name;
  std::string_view value;
};

// Takes elements one after the other off an attribute text. Enumerations take thousands of texts apart, so it
// goes by pointers.
class ElementReader {
 public:
  explicit ElementReader(std::string_view text) : at_(text.data()), end_(text.data() + text.size()) {}

  // The next element at the top level; false at the end.
  bool next(Element& element) {
    while (true) {
      // As a rule one element follows the other with nothing between them.
      const char* const open = at_ != end_ && *at_ == '<' ? at_ : find(at_, '<');
      if (open == nullptr) return false;
      const char* const close = find(open, '>');
      if (close == nullptr) return false;
      std::string_view tag(open + 1, static_cast<std::size_t>(close - open - 1));
      at_ = close + 1;
      // A closing tag without its opening one.
      if (tag.empty() || tag.front() == '/') continue;
      if (tag.back() == '/') {
        tag.remove_suffix(1);
        // Written in the long form such a name would be read back as another one.
        if (tag.ends_with('/')) continue;
        element = {tag, {}};
        return true;
      }
      const char* const end = findClosingTag(tag);
      if (end == nullptr) return false;
      element = {tag, {at_, static_cast<std::size_t>(end - at_)}};
      at_ = end + tag.size() + 3;
      return true;
    }
  }

 private:
  const char* find(const char* from, char character) const {
    if (from == end_) return nullptr;
    return static_cast<const char*>(std::memchr(from, character, static_cast<std::size_t>(end_ - from)));
  }

  // Where "</" name ">" begins in the rest.
  const char* findClosingTag(std::string_view name) const {
    for (const char* tag = find(at_, '<'); tag != nullptr; tag = find(tag + 1, '<')) {
      if (static_cast<std::size_t>(end_ - tag) < name.size() + 3) return nullptr;
      if (tag[1] == '/' && tag[name.size() + 2] == '>' &&
          std::memcmp(tag + 2, name.data(), name.size()) == 0) {
        return tag;
      }
    }
    return nullptr;
  }

  const char* at_;
  const char* end_;
};

void appendElement(std::string& text, std::string_view name, std::string_view value) {
  text.append("<").append(name).append(">").append(value).append("</").append(name).append(">");
}

}  // namespace

TagMap::TagMap(std::string_view text) : textIsCurrent_(false) {
  ElementReader reader(text);
  Element element;
  while (reader.next(element)) elements_.emplace(element.name, element.value);
}

bool TagMap::set(std::string_view name, std::string_view value) {
  std::string written;
  appendElement(written, name, value);
  Element read;
  if (!ElementReader(written).next(read) || read.name != name || read.value != value) return false;
  const auto found = elements_.find(name);
  if (found == elements_.end()) {
    elements_.emplace(name, value);
  } else {
    found->second = value;
  }
  textIsCurrent_ = false;
  return true;
}

const std::string* TagMap::find(std::string_view name) const {
  const auto found = elements_.find(name);
  return found == elements_.end() ? nullptr : &found->second;
}

const std::string& TagMap::text() const {
  if (!textIsCurrent_) {
    text_.clear();
    for (const auto& [name, value] : elements_) appendElement(text_, name, value);
    textIsCurrent_ = true;
  }
  return text_;
}

bool TagMap::find(std::string_view text, std::string_view name, std::string_view& value) {
  Wanted wanted{name, {}};
  find(text, {&wanted, 1});
  if (wanted.value) value = *wanted.value;
  return wanted.value.has_value();
}

void TagMap::find(std::string_view text, std::span<Wanted> wanted) {
  ElementReader reader(text);
  Element element;
  std::size_t missing = wanted.size();
  while (missing > 0 && reader.next(element)) {
    for (Wanted& one : wanted) {
      if (one.value || one.name != element.name) continue;
      one.value = element.value;
      --missing;
    }
  }
}

}  // namespace qvn
