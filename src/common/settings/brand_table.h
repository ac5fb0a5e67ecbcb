// The brands that the library is built for: how a module's file name leads to its registry folder.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace qvn {

// One entry of the table, 60 bytes: laid out so that tools can find and change it in a built module.
struct BrandEntry {
  char prefix[3];          // two characters of the module's file name, terminated
  char folder[33];         // the folder below "Software\", terminated
  std::uint32_t isFamily;  // 0 or 1
  char label[20];          // terminated
};
static_assert(sizeof(BrandEntry) == 60);

// The folder of a module whose prefix no entry has.
inline constexpr char kDefaultBrandFolder[] = "Quorin Tools";

inline constexpr std::array<BrandEntry, 13> kBrandTable = {{
    {"qr", "Quorin Tools", 1, "Quorin"},
    {"qa", "Quorin Office", 1, "Quorin Office"},
    {"qb", "Quorin Business", 1, "Quorin Business"},
    {"qc", "Quorin Colour", 1, "Quorin Colour"},
    {"qd", "Quorin Developer", 1, "Quorin Developer"},
    {"qe", "Quorin Education", 1, "Quorin Education"},
    {"qh", "Quorin Home", 1, "Quorin Home"},
    {"qi", "Quorin Industrial", 1, "Quorin Industrial"},
    {"ql", "Quorin Label", 0, "Quorin Label"},
    {"qm", "Quorin Medical", 0, "Quorin Medical"},
    {"qp", "Quorin Photo", 0, "Quorin Photo"},
    {"qs", "Quorin Scan", 0, "Quorin Scan"},
    {"qw", "Quorin Workgroup", 1, "Quorin Workgroup"},
}};

// The first entry with that prefix, compared without case; null when none has it.
const BrandEntry* findBrand(std::string_view prefix);

}  // namespace qvn
