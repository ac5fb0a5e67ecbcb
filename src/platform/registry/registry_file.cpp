#include "platform/registry/registry_file.h"

#include <fcntl.h>
#include <lmdb.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include "platform/base/unique_descriptor.h"
#include "platform/files/file_lock.h"
#include "platform/files/file_size_signal.h"
#include "platform/files/state_file.h"
#include "platform/registry/registry.h"
#include "platform/registry/registry_check.h"
#include "platform/registry/registry_path.h"
#include "platform/registry/registry_record.h"

namespace qvn::platform::registry {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFileName = "registry.mdb";
constexpr const char* kLockSuffix = "-lock";
constexpr const char* kNewSuffix = ".new-XXXXXX";

// The most that the store may grow to; the file is only as large as its content.
constexpr std::size_t kMapSize = std::size_t{1} << 30;
constexpr std::size_t kSmallestMapSize = std::size_t{64} << 10;
constexpr const char* kMapSizeVariable = "QVN_REGISTRY_MAP_SIZE";

// How many threads of all processes may read at one time, and an upper bound of what the lock file takes for
// each and for itself.
constexpr unsigned kReaders = 4096;
constexpr off_t kReaderSize = 64;
constexpr off_t kLockFileSize = kReaderSize * (kReaders + 4);

struct EnvironmentCloser {
  void operator()(MDB_env* environment) const { mdb_env_close(environment); }
};
using Environment = std::unique_ptr<MDB_env, EnvironmentCloser>;

struct TransactionCloser {
  void operator()(MDB_txn* transaction) const { mdb_txn_abort(transaction); }
};
using ScopedTransaction = std::unique_ptr<MDB_txn, TransactionCloser>;

std::size_t mapSize() {
  const char* const text = std::getenv(kMapSizeVariable);
  if (text == nullptr) return kMapSize;
  std::size_t size = 0;
  const char* const end = text + std::strlen(text);
  const auto [stop, error] = std::from_chars(text, end, size);
  const bool usable = error == std::errc() && stop == end && size >= kSmallestMapSize && size <= kMapSize;
  return usable ? size : kMapSize;
}

MDB_val lend(std::string_view bytes) { return MDB_val{bytes.size(), const_cast<char*>(bytes.data())}; }

int openEnvironment(const fs::path& file, unsigned flags, mode_t mode, Environment& environment) {
  MDB_env* made = nullptr;
  int error = mdb_env_create(&made);
  environment.reset(made);
  if (error == 0) error = mdb_env_set_maxreaders(made, kReaders);
  if (error == 0) error = mdb_env_set_mapsize(made, mapSize());
  if (error == 0) error = mdb_env_open(made, file.c_str(), flags | MDB_NOSUBDIR | MDB_NOTLS, mode);
  return error;
}

// Whoever may write the directory may write the registry.
mode_t modeFor(const fs::path& directory) {
  struct stat status {};
  if (stat(directory.c_str(), &status) != 0) return S_IRUSR | S_IWUSR;
  constexpr mode_t kReadWrite = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
  return (status.st_mode & kReadWrite) | S_IRUSR | S_IWUSR;
}

// Fills a new store with its format and its root, which everybody may use.
int writeFirstEntries(MDB_env* environment) {
  MDB_txn* transaction = nullptr;
  int error = mdb_txn_begin(environment, nullptr, 0, &transaction);
  if (error != 0) return error;
  ScopedTransaction owner(transaction);
  MDB_dbi map = 0;
  error = mdb_dbi_open(transaction, nullptr, 0, &map);
  const auto put = [&](const StoreName& name, std::string_view bytes) {
    MDB_val key = lend(name.bytes());
    MDB_val data = lend(bytes);
    if (error == 0) error = mdb_put(transaction, map, &key, &data, 0);
  };
  const StoreName root = StoreName::root(Hive::LocalMachine);
  put(StoreName::format(), kStoreFormat);
  put(root, KeyRecord{.id = kRootId, .owner = 0, .access = {.everyone = true}, .name = {}}.encode());
  put(StoreName::identifier(kRootId), root.bytes());
  if (error != 0) return error;
  static_cast<void>(owner.release());  // Committing ends it, whatever comes of it.
  return mdb_txn_commit(transaction);
}

// Makes the store in a directory of its maker's own first: a file with the store's name is always a whole
// one.
StoreFailure makeStore(const fs::path& directory, const fs::path& file) {
  const UniqueDescriptor gate = openStateDirectory(directory);
  if (!gate || !lockFile(gate.get(), LOCK_EX)) return describeStoreError(directory, errno);
  struct stat status {};
  if (lstat(file.c_str(), &status) == 0) return {};

  std::string own = file.string() + kNewSuffix;
  if (mkdtemp(own.data()) == nullptr) return describeStoreError(directory, errno);
  const fs::path made = fs::path(own) / kFileName;
  const mode_t mode = modeFor(directory);
  const FileSizeSignalBlock block;
  int error = 0;
  {
    Environment environment;
    error = openEnvironment(made, MDB_NOLOCK, mode, environment);
    if (error == 0) error = writeFirstEntries(environment.get());
  }
  if (error == 0 && (chmod(made.c_str(), mode) != 0 || rename(made.c_str(), file.c_str()) != 0))
    error = errno;
  unlink(made.c_str());
  rmdir(own.c_str());
  if (error == 0 && fsync(gate.get()) != 0) error = errno;
  return error == 0 ? StoreFailure{} : describeStoreError(file, error);
}

// LMDB opens its files by their names. What the system's own account uses is made its own, so that nobody
// else can have put another file in its place by then.
int holdInPlace(const fs::path& file, const UniqueDescriptor& opened) {
  if (geteuid() != 0) return 0;
  struct stat status {};
  struct stat named {};
  if (fstat(opened.get(), &status) != 0) return errno;
  if (status.st_uid == 0) return 0;
  if (fchown(opened.get(), 0, static_cast<gid_t>(-1)) != 0 || lstat(file.c_str(), &named) != 0) return errno;
  return named.st_dev == status.st_dev && named.st_ino == status.st_ino ? 0 : EACCES;
}

// Makes the lock file at its full size, with disk blocks behind it: it is mapped, and a store into a hole on
// a full disk would be a bus error. It must not be opened again once the store is open, since closing any
// descriptor of it drops the process's locks.
int prepareLockFile(const fs::path& file, mode_t mode) {
  const fs::path lock = fs::path(file) += kLockSuffix;
  constexpr off_t kBlockSize = 512;
  const FileSizeSignalBlock block;
  const UniqueDescriptor existing = openStateFile(lock, O_RDWR | O_CREAT, mode);
  struct stat status {};
  if (!existing || fstat(existing.get(), &status) != 0) return errno;
  if (const int error = holdInPlace(lock, existing); error != 0) return error;
  if (status.st_size >= kLockFileSize && status.st_blocks * kBlockSize >= kLockFileSize) return 0;
  if (status.st_uid == geteuid() && fchmod(existing.get(), mode) != 0) return errno;
  return posix_fallocate(existing.get(), 0, kLockFileSize);
}

StoreFailure damaged(const fs::path& file, const std::string& what) {
  if (what.empty()) return {};
  return {kRegistryCorrupt, file.string() + " is damaged: " + what};
}

StoreFailure checkHead(const fs::path& file) {
  const UniqueDescriptor descriptor = openStateFile(file, O_RDONLY);
  if (!descriptor) return describeStoreError(file, errno);
  if (const int error = holdInPlace(file, descriptor); error != 0) return describeStoreError(file, error);
  return damaged(file, findDamageInHead(descriptor.get()));
}

StoreFailure checkFormat(MDB_env* environment, const fs::path& file) {
  MDB_txn* transaction = nullptr;
  int error = mdb_txn_begin(environment, nullptr, MDB_RDONLY, &transaction);
  if (error != 0) return describeStoreError(file, error);
  const ScopedTransaction owner(transaction);
  MDB_dbi map = 0;
  const StoreName format = StoreName::format();
  MDB_val key = lend(format.bytes());
  MDB_val data{};
  error = mdb_dbi_open(transaction, nullptr, 0, &map);
  if (error == 0) error = mdb_get(transaction, map, &key, &data);
  if (error == MDB_NOTFOUND) return damaged(file, "it is not a registry");
  if (error != 0) return describeStoreError(file, error);
  const std::string_view found(static_cast<const char*>(data.mv_data), data.mv_size);
  return damaged(file, found == kStoreFormat ? "" : "it has another format");
}

}  // namespace

StoreFailure describeStoreError(const fs::path& file, int error) {
  const auto because = [&](ErrorCode code, const char* what) {
    return StoreFailure{code, file.string() + " " + what + ": " + mdb_strerror(error)};
  };
  switch (error) {
    case MDB_CORRUPTED:
    case MDB_PAGE_NOTFOUND:
    case MDB_INVALID:
    case MDB_VERSION_MISMATCH:
    case MDB_INCOMPATIBLE:
    case MDB_PANIC:
      return because(kRegistryCorrupt, "is damaged");
    case MDB_MAP_FULL:
    case MDB_TXN_FULL:
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return because(kDiskFull, "cannot grow");
    case MDB_READERS_FULL:
    case EMFILE:
    case ENFILE:
      return because(kTooManyOpenFiles, "has too many readers");
    case ENOMEM:
      return because(kNotEnoughMemory, "cannot be mapped");
    case EACCES:
    case EPERM:
    case ELOOP:
    case EROFS:
      return because(kAccessDenied, "cannot be written");
    default:
      return because(kRegistryIoFailed, "cannot be used");
  }
}

fs::path storeFile(const fs::path& stateDirectory) { return stateDirectory / kFileName; }

MDB_env* openStoreFile(const fs::path& stateDirectory, StoreFailure& failure) {
  const fs::path file = storeFile(stateDirectory);
  struct stat status {};
  if (lstat(file.c_str(), &status) != 0) {
    failure = errno == ENOENT ? makeStore(stateDirectory, file) : describeStoreError(file, errno);
    if (failure.code != kSuccess) return nullptr;
  }
  failure = checkHead(file);
  if (failure.code != kSuccess) return nullptr;

  const mode_t mode = modeFor(stateDirectory);
  Environment environment;
  int error = prepareLockFile(file, mode);
  if (error == 0) error = openEnvironment(file, 0, mode, environment);
  failure =
      error == 0 ? damaged(file, findDamageInPages(environment.get())) : describeStoreError(file, error);
  if (failure.code == kSuccess) failure = checkFormat(environment.get(), file);
  return failure.code == kSuccess ? environment.release() : nullptr;
}

}  // namespace qvn::platform::registry
