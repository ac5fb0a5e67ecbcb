// AccountNumberSearch: finds a job's account number in the PJL at the head of its print data.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace qvn {

// Looks for a line that begins with "@PJL LJOBINFO ACCOUNTNUMBER = " and takes the quoted value after it. The
// data may come in pieces of any size; nothing of it is kept but the value.
class AccountNumberSearch {
 public:
  // A longer value is cut.
  static constexpr std::size_t kMaxLength = 21;

  // Begins with the first byte of a job. The line feed before the line must be among its first bytes, at a
  // position of at most `limit`.
  explicit AccountNumberSearch(std::uint32_t limit) : limit_(limit) {}

  // Goes on with the next bytes of the job; the value once it is complete. Not to be called after that.
  std::optional<std::string> feed(std::span<const std::uint8_t> bytes);

  // Whether further bytes could bring the value.
  bool isOver() const { return step_ == Step::Over; }

 private:
  enum class Step { LineFeed, Marker, OpeningQuote, Value, Over };

  // Takes one byte; true when the value is complete.
  bool take(std::uint8_t byte);

  std::uint64_t limit_;
  std::uint64_t position_ = 0;
  Step step_ = Step::LineFeed;
  std::size_t matched_ = 0;
  std::string value_;
};

}  // namespace qvn
