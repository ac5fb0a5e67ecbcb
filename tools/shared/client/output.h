// What commands print on standard output: tables for people, JSON for programs.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace qvn::cli {

// JSON objects keep the order in which their members were put in.
using Json = nlohmann::ordered_json;

// The text on one line of so many columns: control characters, which a device or a file's owner may have put
// into a name, are shown as "?", and what does not fit is cut off and ends in "...". Text is UTF-8.
std::string onOneLine(std::string text, std::size_t columns);
// The columns that a text takes.
std::size_t width(const std::string& text);

// Prints rows below a heading, columns aligned, each cell on one line.
void printTable(const std::vector<std::string>& heading, const std::vector<std::vector<std::string>>& rows);

// Prints indented JSON; bytes that are not UTF-8 become the replacement character.
void printJson(const Json& value);

// The value on one line of its own, for programs that read one after the other.
void printJsonLine(const Json& value);

// A JSON value as a cell of a table: a text without quotes, "-" for null.
std::string cell(const Json& value);

// Prints an array of flat objects, as JSON or as a table with a column per name.
void printListing(const Json& objects, const std::vector<std::string>& names, bool json);

}  // namespace qvn::cli
