// What commands print on standard output: tables for people, JSON for programs.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace qvn::cli {

// JSON objects keep the order in which their members were put in.
using Json = nlohmann::ordered_json;

// Prints rows below a heading, columns aligned. Control characters, which a device may have put into a name,
// are shown as "?".
void printTable(const std::vector<std::string>& heading, const std::vector<std::vector<std::string>>& rows);

// Prints indented JSON; bytes that are not UTF-8 become the replacement character.
void printJson(const Json& value);

// A JSON value as a cell of a table: a text without quotes, "-" for null.
std::string cell(const Json& value);

// Prints an array of flat objects, as JSON or as a table with a column per name.
void printListing(const Json& objects, const std::vector<std::string>& names, bool json);

}  // namespace qvn::cli
