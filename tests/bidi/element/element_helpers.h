// Trees for tests, and what goes wrong with them.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>

#include "bidi/element/list_elem.h"
#include "common/exception.h"

namespace qvn::test {

// The text of the failure, and its code unless that is 0: "text [87]"; "no failure" when there is none.
template <typename Action>
std::string failureOf(Action&& action) {
  try {
    action();
  } catch (const Win32Exception& exception) {
    const std::string text = exception.getMessage();
    EXPECT_TRUE(exception.describe().starts_with(text)) << "it names no place: " << exception.describe();
    return exception.getCode() == 0 ? text : text + " [" + std::to_string(exception.getCode()) + "]";
  }
  return "no failure";
}

// Every action fails as its row says.
inline void expectFailures(std::initializer_list<std::pair<std::string, std::function<void()>>> cases) {
  for (const auto& [failure, action] : cases) EXPECT_EQ(failureOf(action), failure);
}

// The tree in one line: "[: 1, {a: 2}]".
inline std::string shown(const Element& element) {
  if (!element.isInstanceOf("NonterminalElem")) return element.describe();
  const bool named = element.isInstanceOf("MapElem");
  std::string text = named ? "{" : "[";
  for (const auto children = element.iterator(); children->hasNext();) {
    if (text.size() > 1) text += ", ";
    if (named) text += children->nextName();
    text += shown(*children->next());
  }
  return text + (named ? "}" : "]");
}

// A list in a list in a list ..., with something in the innermost.
inline std::unique_ptr<Element> nest(std::size_t depth, std::unique_ptr<Element> innermost) {
  for (std::size_t level = 0; level < depth; ++level) {
    auto outer = std::make_unique<ListElem>();
    outer->addChild(0, std::move(innermost));
    innermost = std::move(outer);
  }
  return innermost;
}

// How many lists are nested there.
inline std::size_t depthOf(const Element* element) {
  std::size_t depth = 0;
  for (; element->isInstanceOf("ListElem") && element->getNumChildren() == 1; ++depth) {
    element = element->getChild(0);
  }
  return depth;
}

}  // namespace qvn::test
