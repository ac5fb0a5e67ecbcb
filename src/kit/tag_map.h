// TagMap: an attribute text taken apart into its elements, and put together again.
//
// Reading is tolerant of what the library never writes: anything between elements is passed over, of several
// elements with one name the first counts, and reading ends at the first tag that is not closed.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace qvn {

class TagMap {
 public:
  TagMap() = default;
  explicit TagMap(std::string_view text);

  // Replaces the value of the name or adds it. False, and nothing changed, when the two could not be read
  // back as they are: a name that is no tag, a value with the closing tag in it.
  [[nodiscard]] bool set(std::string_view name, std::string_view value);

  // Null when there is no such element; valid until the map changes.
  const std::string* find(std::string_view name) const;

  // The elements in the byte order of their names, nothing between them.
  const std::string& text() const;

  // The value of one element of a text, without taking the whole text apart; false when there is none.
  static bool find(std::string_view text, std::string_view name, std::string_view& value);

  struct Wanted {
    std::string_view name;
    std::optional<std::string_view> value;  // none when there is no such element
  };
  // The same for several elements in one pass.
  static void find(std::string_view text, std::span<Wanted> wanted);

 private:
  std::map<std::string, std::string, std::less<>> elements_;
  // The serialised form, kept while `textIsCurrent_`.
  mutable std::string text_;
  mutable bool textIsCurrent_ = true;
};

}  // namespace qvn
