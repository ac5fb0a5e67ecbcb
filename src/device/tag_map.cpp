#include "device/tag_map.h"

namespace qvn {
namespace {

struct Element {
  std::string_view name;
  std::string_view value;
};

// Takes elements one after the other off an attribute text.
class ElementReader {
 public:
  explicit ElementReader(std::string_view text) : rest_(text) {}

  // The next element at the top level; false at the end.
  bool next(Element& element) {
    while (true) {
      const std::size_t open = rest_.find('<');
      if (open == std::string_view::npos) return false;
      const std::size_t close = rest_.find('>', open);
      if (close == std::string_view::npos) return false;
      std::string_view tag = rest_.substr(open + 1, close - open - 1);
      rest_.remove_prefix(close + 1);
      // A closing tag without its opening one.
      if (tag.empty() || tag.front() == '/') continue;
      if (tag.back() == '/') {
        tag.remove_suffix(1);
        // Written in the long form such a name would be read back as another one.
        if (tag.ends_with('/')) continue;
        element = {tag, {}};
        return true;
      }
      const std::size_t end = findClosingTag(tag);
      if (end == std::string_view::npos) return false;
      element = {tag, rest_.substr(0, end)};
      rest_.remove_prefix(end + tag.size() + 3);
      return true;
    }
  }

 private:
  // Where "</" name ">" begins in the rest.
  std::size_t findClosingTag(std::string_view name) const {
    std::size_t position = 0;
    while ((position = rest_.find("</", position)) != std::string_view::npos) {
      const std::string_view candidate = rest_.substr(position + 2);
      if (candidate.size() > name.size() && candidate.starts_with(name) && candidate[name.size()] == '>') {
        return position;
      }
      position += 2;
    }
    return std::string_view::npos;
  }

  std::string_view rest_;
};

}  // namespace

TagMap::TagMap(std::string_view text) : textIsCurrent_(false) {
  ElementReader reader(text);
  Element element;
  while (reader.next(element)) elements_.emplace(element.name, element.value);
}

void TagMap::set(std::string_view name, std::string_view value) {
  const auto found = elements_.find(name);
  if (found == elements_.end()) {
    elements_.emplace(name, value);
  } else {
    found->second = value;
  }
  textIsCurrent_ = false;
}

const std::string* TagMap::find(std::string_view name) const {
  const auto found = elements_.find(name);
  return found == elements_.end() ? nullptr : &found->second;
}

const std::string& TagMap::text() const {
  if (!textIsCurrent_) {
    text_.clear();
    for (const auto& [name, value] : elements_) {
      text_.append("<").append(name).append(">").append(value).append("</").append(name).append(">");
    }
    textIsCurrent_ = true;
  }
  return text_;
}

bool TagMap::find(std::string_view text, std::string_view name, std::string_view& value) {
  ElementReader reader(text);
  Element element;
  while (reader.next(element)) {
    if (element.name == name) {
      value = element.value;
      return true;
    }
  }
  return false;
}

}  // namespace qvn
