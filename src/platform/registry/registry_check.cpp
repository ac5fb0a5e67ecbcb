#include "platform/registry/registry_check.h"

#include <lmdb.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>
#include <vector>

namespace qvn::platform::registry {
namespace {

using PageNumber = std::uint64_t;

// LMDB's file, version 1, on a 64-bit machine: pages of the system's size in its own byte order. Pages 0 and
// 1 each hold a head; the one with the greater transaction number is the newest state.
constexpr std::uint32_t kMagic = 0xBEEFC0DE;
constexpr std::uint32_t kVersion = 1;
constexpr PageNumber kHeads = 2;
constexpr PageNumber kNoPage = ~PageNumber{0};
constexpr std::size_t kMaxKeySize = 511;
constexpr std::uint16_t kMaxDepth = 32;

// Page: number 8 | pad 2 | flags 2 | lower 2 | upper 2 (or, when it starts an overflow, pages 4) | node
// offsets
constexpr std::size_t kPageFlags = 10;
constexpr std::size_t kPageLower = 12;
constexpr std::size_t kPageUpper = 14;
constexpr std::size_t kOverflowPages = 12;
constexpr std::size_t kPageHeaderSize = 16;

constexpr std::uint16_t kBranchPage = 0x01;
constexpr std::uint16_t kLeafPage = 0x02;
constexpr std::uint16_t kOverflowPage = 0x04;
constexpr std::uint16_t kHeadPage = 0x08;

// Node: data size 4 (in a branch the low part of a page number) | flags 2 (its high part) | key size 2 | key
// | data
constexpr std::size_t kNodeFlags = 4;
constexpr std::size_t kNodeKeySize = 6;
constexpr std::size_t kNodeHeaderSize = 8;
constexpr std::uint16_t kDataInOverflow = 1;

// Head, after the page header: magic 4 | version 4 | address 8 | map size 8 | two trees of 48 | last page 8 |
// transaction 8. Tree: pad 4 (in the first: the page size) | flags 2 | depth 2 | four counts of 8 | root page
// 8
constexpr std::size_t kHeadMagic = kPageHeaderSize;
constexpr std::size_t kHeadVersion = kHeadMagic + 4;
constexpr std::size_t kHeadFreeTree = kHeadVersion + 4 + 8 + 8;
constexpr std::size_t kTreeSize = 48;
constexpr std::size_t kHeadMainTree = kHeadFreeTree + kTreeSize;
constexpr std::size_t kHeadLastPage = kHeadMainTree + kTreeSize;
constexpr std::size_t kHeadTransaction = kHeadLastPage + 8;
constexpr std::size_t kHeadSize = kHeadTransaction + 8;
constexpr std::size_t kTreeFlags = 4;
constexpr std::size_t kTreeDepth = 6;
constexpr std::size_t kTreeRoot = 40;
constexpr std::uint16_t kIntegerKeys = MDB_INTEGERKEY;
constexpr std::uint16_t kTreeFlagsMask = 0xFF;  // The rest is how some process opened the file.

static_assert(MDB_VERSION_MAJOR == 0 && MDB_VERSION_MINOR == 9,
              "the layout above is that of LMDB 0.9: another one may call sound stores damaged");
static_assert(sizeof(std::size_t) == 8, "the layout above is that of 64-bit machines");

// The number at `offset`, which the caller knows to lie within `bytes`.
template <typename Number>
Number load(std::string_view bytes, std::size_t offset) {
  Number number{};
  std::memcpy(&number, bytes.substr(offset, sizeof number).data(), sizeof number);
  return number;
}

// Walks the trees of one state and remembers which pages it has seen.
class PageWalk {
 public:
  PageWalk(std::string_view pages, std::size_t pageSize, std::string_view head)
      : pages_(pages),
        pageSize_(pageSize),
        head_(head),
        lastPage_(load<std::uint64_t>(head, kHeadLastPage)),
        seen_(lastPage_ + 1) {}

  std::string run() {
    const bool sound = walkTree(kHeadMainTree, 0, &PageWalk::acceptEntry) &&
                       walkTree(kHeadFreeTree, kIntegerKeys, &PageWalk::acceptFreePages);
    return sound ? std::string() : "page " + std::to_string(current_) + " " + reason_;
  }

 private:
  using Accept = bool (PageWalk::*)(std::string_view key, std::string_view data);

  struct Tree {
    std::uint16_t depth;
    bool integerKeys;
    Accept accept;
  };

  struct Node {
    std::string_view header;
    std::string_view key;
    std::size_t dataOffset;  // in the page
  };

  bool refuse(const char* reason) {
    reason_ = reason;
    return false;
  }

  std::string_view pageAt(PageNumber number) const { return pages_.substr(number * pageSize_, pageSize_); }

  // Takes `count` pages, which nothing else may use, from `first` on.
  bool claim(PageNumber first, PageNumber count) {
    current_ = first;
    if (first < kHeads || first > lastPage_ || count > lastPage_ - first + 1)
      return refuse("is out of range");
    for (PageNumber page = first; page < first + count; ++page) {
      if (seen_[page]) return refuse("is used twice");
      seen_[page] = true;
    }
    return true;
  }

  bool walkTree(std::size_t offset, std::uint16_t flags, Accept accept) {
    const std::string_view tree = head_.substr(offset, kTreeSize);
    current_ = 0;
    const auto root = load<std::uint64_t>(tree, kTreeRoot);
    const auto depth = load<std::uint16_t>(tree, kTreeDepth);
    if ((load<std::uint16_t>(tree, kTreeFlags) & kTreeFlagsMask) != flags)
      return refuse("has other flags than expected");
    if (depth > kMaxDepth || (depth == 0) != (root == kNoPage)) return refuse("has a bad tree depth");
    lastKey_.reset();
    leastKey_ = {};
    return depth == 0 || walkPage(root, 1, Tree{depth, flags == kIntegerKeys, accept});
  }

  bool walkPage(PageNumber number, std::uint16_t level, const Tree& tree) {
    if (!claim(number, 1)) return false;
    const std::string_view page = pageAt(number);
    const bool leaf = level == tree.depth;
    const auto flags = load<std::uint16_t>(page, kPageFlags);
    if (load<std::uint64_t>(page, 0) != number) return refuse("has another page's number");
    if (flags != (leaf ? kLeafPage : kBranchPage)) return refuse("is of the wrong kind");

    const std::size_t lower = load<std::uint16_t>(page, kPageLower);
    const std::size_t upper = load<std::uint16_t>(page, kPageUpper);
    if (lower < kPageHeaderSize || lower % 2 != 0 || lower > upper || upper > pageSize_) {
      return refuse("has bad bounds");
    }
    const std::size_t count = (lower - kPageHeaderSize) / sizeof(std::uint16_t);
    if (count < (leaf || tree.integerKeys ? 1U : 2U)) return refuse("has too few entries");
    for (std::size_t i = 0; i < count; ++i) {
      current_ = number;
      Node node;
      if (!findNode(page, i, upper, node)) return false;
      if (!(leaf ? walkEntry(page, node, tree) : walkChild(node, i == 0, level, tree))) return false;
    }
    return true;
  }

  bool findNode(std::string_view page, std::size_t index, std::size_t upper, Node& node) {
    const std::size_t offset = load<std::uint16_t>(page, kPageHeaderSize + index * sizeof(std::uint16_t));
    if (offset < upper || offset % 2 != 0 || offset + kNodeHeaderSize > pageSize_) {
      return refuse("has an entry outside of it");
    }
    node.header = page.substr(offset, kNodeHeaderSize);
    const std::size_t keySize = load<std::uint16_t>(node.header, kNodeKeySize);
    node.dataOffset = offset + kNodeHeaderSize + keySize;
    if (keySize > kMaxKeySize || node.dataOffset > pageSize_) return refuse("has an overlong key");
    node.key = page.substr(offset + kNodeHeaderSize, keySize);
    return true;
  }

  bool walkChild(const Node& node, bool first, std::uint16_t level, const Tree& tree) {
    const PageNumber child =
        load<std::uint32_t>(node.header, 0) | PageNumber{load<std::uint16_t>(node.header, kNodeFlags)} << 32;
    // The first key of a branch stands for everything below the second.
    if (!first) {
      if (tree.integerKeys && node.key.size() != sizeof(std::uint64_t)) return refuse("has a bad key");
      if (lastKey_ && !isBefore(*lastKey_, node.key, tree)) return refuse("is out of order");
      leastKey_ = node.key;
    }
    return walkPage(child, static_cast<std::uint16_t>(level + 1), tree);
  }

  bool walkEntry(std::string_view page, const Node& node, const Tree& tree) {
    if (node.key.empty() || (tree.integerKeys && node.key.size() != sizeof(std::uint64_t))) {
      return refuse("has a bad key");
    }
    if ((lastKey_ && !isBefore(*lastKey_, node.key, tree)) ||
        (!leastKey_.empty() && isBefore(node.key, leastKey_, tree))) {
      return refuse("is out of order");
    }
    lastKey_ = node.key;

    const std::size_t size = load<std::uint32_t>(node.header, 0);
    const auto flags = load<std::uint16_t>(node.header, kNodeFlags);
    if ((flags & ~kDataInOverflow) != 0) return refuse("has an entry of an unknown kind");
    const bool overflow = flags == kDataInOverflow;
    if (node.dataOffset + (overflow ? sizeof(PageNumber) : size) > pageSize_) {
      return refuse("has an entry outside of it");
    }
    std::string_view data = page.substr(node.dataOffset, overflow ? 0 : size);
    if (overflow && !findOverflow(load<PageNumber>(page, node.dataOffset), size, data)) return false;
    return (this->*tree.accept)(node.key, data);
  }

  bool findOverflow(PageNumber first, std::size_t size, std::string_view& data) {
    if (!claim(first, 1)) return false;
    const std::string_view page = pageAt(first);
    const PageNumber count = load<std::uint32_t>(page, kOverflowPages);
    const auto flags = load<std::uint16_t>(page, kPageFlags);
    if (load<std::uint64_t>(page, 0) != first || flags != kOverflowPage)
      return refuse("is of the wrong kind");
    if (count == 0 || count * pageSize_ < kPageHeaderSize + size) return refuse("is too short for its data");
    if (count > 1 && !claim(first + 1, count - 1)) return false;
    data = pages_.substr(first * pageSize_ + kPageHeaderSize, size);
    return true;
  }

  bool acceptEntry(std::string_view, std::string_view) { return true; }

  // Data: a count, then as many page numbers, falling.
  bool acceptFreePages(std::string_view, std::string_view data) {
    const PageNumber holder = current_;
    if (data.size() < sizeof(PageNumber)) return refuse("has a bad list of free pages");
    const std::size_t count = load<std::uint64_t>(data, 0);
    if (count > data.size() / sizeof(PageNumber) - 1) return refuse("has a bad list of free pages");
    PageNumber above = lastPage_ + 1;
    for (std::size_t i = 1; i <= count; ++i) {
      const auto page = load<PageNumber>(data, i * sizeof(PageNumber));
      if (page >= above) return refuse("has an unordered list of free pages");
      if (!claim(page, 1)) return false;
      above = page;
    }
    current_ = holder;
    return true;
  }

  static bool isBefore(std::string_view left, std::string_view right, const Tree& tree) {
    if (!tree.integerKeys) return left < right;
    return load<std::uint64_t>(left, 0) < load<std::uint64_t>(right, 0);
  }

  const std::string_view pages_;
  const std::size_t pageSize_;
  const std::string_view head_;
  const PageNumber lastPage_;
  std::vector<bool> seen_;
  std::optional<std::string_view> lastKey_;  // of the entries so far
  std::string_view leastKey_;                // what a branch promises of the entries to come
  PageNumber current_ = 0;
  const char* reason_ = "";
};

struct ReadTransactionOwner {
  MDB_txn* transaction = nullptr;
  ~ReadTransactionOwner() {
    if (transaction != nullptr) mdb_txn_abort(transaction);
  }
};

class MappedFile {
 public:
  explicit MappedFile(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || status.st_size <= 0) return;
    const auto size = static_cast<std::size_t>(status.st_size);
    void* const memory = mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
    if (memory != MAP_FAILED) bytes_ = {static_cast<const char*>(memory), size};
  }
  ~MappedFile() {
    if (!bytes_.empty()) munmap(const_cast<char*>(bytes_.data()), bytes_.size());
  }
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;

  std::string_view bytes() const { return bytes_; }

 private:
  std::string_view bytes_;  // empty when it cannot be mapped
};

// The head that the transaction started from; empty when writers have replaced it already.
std::string headOf(std::string_view pages, std::size_t pageSize, std::size_t transaction) {
  for (PageNumber page = 0; page < kHeads; ++page) {
    std::string head(pages.substr(page * pageSize, kHeadSize));
    if (load<std::uint64_t>(head, kHeadTransaction) == transaction) return head;
  }
  return {};
}

}  // namespace

std::string findDamageInHead(int descriptor) {
  const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  struct stat status {};
  if (fstat(descriptor, &status) != 0) return "its size cannot be read";
  const PageNumber pages = static_cast<std::size_t>(status.st_size) / pageSize;
  if (status.st_size == 0) return "it is empty";
  if (pages < kHeads) return "it is too short";
  for (PageNumber page = 0; page < kHeads; ++page) {
    std::array<char, kHeadSize> buffer{};
    const ssize_t got = pread(descriptor, buffer.data(), buffer.size(), static_cast<off_t>(page * pageSize));
    if (got != static_cast<ssize_t>(buffer.size())) return "it cannot be read";
    const std::string_view head(buffer.data(), buffer.size());
    const auto flags = load<std::uint16_t>(head, kPageFlags);
    if (flags != kHeadPage || load<std::uint32_t>(head, kHeadMagic) != kMagic) return "it is not a registry";
    if (load<std::uint32_t>(head, kHeadVersion) != kVersion) return "it has another format";
    if (load<std::uint32_t>(head, kHeadFreeTree) != pageSize) return "it has another page size";
    if (load<std::uint64_t>(head, kHeadLastPage) >= pages) return "its end is missing";
  }
  return {};
}

std::string findDamageInPages(MDB_env* environment) {
  constexpr int kAttempts = 100;
  const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  int descriptor = -1;
  mdb_env_get_fd(environment, &descriptor);
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    // While it lasts, writers leave the pages of its state alone.
    ReadTransactionOwner owner;
    if (mdb_txn_begin(environment, nullptr, MDB_RDONLY, &owner.transaction) != 0) return "it cannot be read";
    const MappedFile file(descriptor);
    if (file.bytes().size() < kHeads * pageSize) return "it cannot be read";
    const std::string head = headOf(file.bytes(), pageSize, mdb_txn_id(owner.transaction));
    if (head.empty()) continue;
    const PageNumber lastPage = load<std::uint64_t>(head, kHeadLastPage);
    if (lastPage >= file.bytes().size() / pageSize) return "its end is missing";
    return PageWalk(file.bytes(), pageSize, head).run();
  }
  return "its head changes all the time";
}

}  // namespace qvn::platform::registry
