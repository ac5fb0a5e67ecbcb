#include "printer/bpd/job/account_number_search.h"

#include <string_view>

namespace qvn {
namespace {

constexpr std::string_view kMarker = "@PJL LJOBINFO ACCOUNTNUMBER = ";

}  // namespace

std::optional<std::string> AccountNumberSearch::feed(std::span<const std::uint8_t> bytes) {
  for (const std::uint8_t byte : bytes) {
    if (isOver()) break;
    if (take(byte)) return value_;
    ++position_;
  }
  return std::nullopt;
}

bool AccountNumberSearch::take(std::uint8_t byte) {
  switch (step_) {
    case Step::Marker:
      if (byte == static_cast<std::uint8_t>(kMarker[matched_])) {
        if (++matched_ == kMarker.size()) step_ = Step::OpeningQuote;
        return false;
      }
      step_ = Step::LineFeed;
      // The byte after a line feed is not looked at again, whatever it is; a later one may be a line feed.
      if (matched_ == 0) return false;
      [[fallthrough]];
    case Step::LineFeed:
      if (position_ > limit_) {
        step_ = Step::Over;
      } else if (byte == '\n') {
        step_ = Step::Marker;
        matched_ = 0;
      }
      return false;
    case Step::OpeningQuote:
      step_ = Step::Value;
      return false;
    case Step::Value:
      if (byte != '"') value_ += static_cast<char>(byte);
      if (byte != '"' && value_.size() < kMaxLength) return false;
      step_ = Step::Over;
      return true;
    case Step::Over:
      return false;
  }
  return false;
}

}  // namespace qvn
