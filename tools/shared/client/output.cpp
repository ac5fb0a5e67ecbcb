#include "shared/client/output.h"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <nlohmann/json.hpp>

namespace qvn::cli {

namespace {

std::string printable(std::string text) {
  for (char& character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x20 || byte == 0x7F) {
      character = '?';
    }
  }
  return text;
}

std::string upperCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

bool continues(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

}  // namespace

// Every byte but the continuation bytes begins a character.
std::size_t width(const std::string& text) {
  return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), continues));
}

std::string onOneLine(std::string text, std::size_t columns) {
  text = printable(std::move(text));
  if (width(text) <= columns) return text;
  constexpr std::string_view kCut = "...";
  const std::size_t kept = columns > kCut.size() ? columns - kCut.size() : 0;
  std::size_t end = 0;
  for (std::size_t count = 0; end < text.size() && (count < kept || continues(text[end])); ++end) {
    if (end + 1 == text.size() || !continues(text[end + 1])) ++count;
  }
  return text.substr(0, end) + std::string(kCut.substr(0, columns));
}

void printTable(const std::vector<std::string>& heading, const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::vector<std::string>> lines{heading};
  lines.insert(lines.end(), rows.begin(), rows.end());
  std::vector<std::size_t> widths(heading.size(), 0);
  for (auto& line : lines) {
    for (std::size_t column = 0; column < line.size(); ++column) {
      line[column] = printable(line[column]);
      widths[column] = std::max(widths[column], width(line[column]));
    }
  }
  for (const auto& line : lines) {
    for (std::size_t column = 0; column < line.size(); ++column) {
      std::cout << line[column];
      if (column + 1 < line.size()) {
        std::cout << std::string(widths[column] - width(line[column]) + 2, ' ');
      }
    }
    std::cout << '\n';
  }
}

void printJson(const Json& value) {
  std::cout << value.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

void printJsonLine(const Json& value) {
  std::cout << value.dump(-1, ' ', false, Json::error_handler_t::replace) << std::endl;
}

std::string cell(const Json& value) {
  if (value.is_null()) {
    return "-";
  }
  return value.is_string() ? value.get<std::string>() : value.dump();
}

void printListing(const Json& objects, const std::vector<std::string>& names, bool json) {
  if (json) {
    printJson(objects);
    return;
  }
  std::vector<std::string> heading;
  std::transform(names.begin(), names.end(), std::back_inserter(heading), upperCase);
  std::vector<std::vector<std::string>> rows;
  for (const Json& object : objects) {
    std::vector<std::string> row;
    row.reserve(names.size());
    for (const std::string& name : names) {
      row.push_back(object.contains(name) ? cell(object[name]) : "-");
    }
    rows.push_back(row);
  }
  printTable(heading, rows);
}

}  // namespace qvn::cli
