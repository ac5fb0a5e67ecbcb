#include "platform/threads/shared_object.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "platform/base/failure.h"
#include "platform/files/file_lock.h"
#include "platform/files/file_size_signal.h"
#include "platform/files/paths.h"
#include "platform/files/state_directory.h"
#include "platform/files/state_file.h"

namespace qvn::platform {

struct SharedObject::Header {
  std::uint32_t magic;
  std::uint32_t kind;
  alignas(std::max_align_t) std::byte payload[kPayloadSize];
};

namespace {

// Spells "QVN" and the version of the layout.
constexpr std::uint32_t kMagic = 0x51564E02;
constexpr std::size_t kMaxFileName = 255;

// The objects that this process has open. Those with a name: one mapping each, however often they are opened,
// so that the addresses agree as well as the contents.
struct OpenObjects {
  std::mutex mutex;
  std::map<std::string, SharedObject*> byName;
  std::vector<SharedObject*>
      heldWithoutName;  // nobody's any more, but in the list of a thread that holds them
};

OpenObjects& openObjects() {
  static auto& instance = *new OpenObjects;  // Never destroyed: objects may be closed while the process ends.
  return instance;
}

// A file name for any text: letters, digits and a few signs stand for themselves, all else is "%" and two hex
// digits. A first dot is no exception, so "." and ".." are names like others.
std::string fileName(const std::string& name) {
  static constexpr char kHexDigits[] = "0123456789ABCDEF";
  std::string file;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                       (byte >= '0' && byte <= '9') || byte == '_' || byte == '-' ||
                       (byte == '.' && !file.empty());
    if (plain) {
      file += c;
    } else {
      file += '%';
      file += kHexDigits[byte >> 4];
      file += kHexDigits[byte & 0xF];
    }
  }
  return file;
}

}  // namespace

SharedObject::~SharedObject() {
  if (header_ == nullptr) return;
  if (isShared()) {
    munmap(header_, sizeof(Header));
  } else {
    delete header_;
  }
}

void* SharedObject::payload() const { return header_->payload; }

void SharedObject::makePrivate(Kind kind, const std::function<void(void*)>& initialise) {
  header_ = new Header{};
  header_->kind = static_cast<std::uint32_t>(kind);
  initialise(header_->payload);
}

ErrorCode SharedObject::map(Kind kind, Access access, const std::function<void(void*)>& initialise) {
  const std::string file = fileName(name_);
  if (file.size() > kMaxFileName) return kNameTooLong;
  const std::filesystem::path root = stateDirectory();
  if (root.empty()) return lastError();
  const std::filesystem::path directory = root / "objects";
  if (const ErrorCode error = makeStateDirectory(directory); error != kSuccess) return error;

  // Opening is one step for all processes: the lock on the directory goes with the descriptor, or with the
  // process should it be killed here.
  const UniqueDescriptor gate = openStateDirectory(directory);
  if (!gate || !lockFile(gate.get(), LOCK_EX)) return errorFromErrno(errno);

  descriptor_ = openStateFile(directory / file, O_RDWR | O_CREAT, S_IRUSR | S_IWUSR);
  if (!descriptor_) return errorFromErrno(errno);

  const bool alone = lockFile(descriptor_.get(), LOCK_EX | LOCK_NB);
  if (alone) {
    // Only the file's owner can change its mode; for another account the mode has just been proved
    // sufficient.
    static_cast<void>(fchmod(descriptor_.get(), fileMode(access)));
    const FileSizeSignalBlock block;
    // Room on the disk for the whole of it: a store into a hole on a full disk would be a bus error.
    if (const int error = posix_fallocate(descriptor_.get(), 0, sizeof(Header)); error != 0) {
      return errorFromErrno(error);
    }
  } else if (errno != EWOULDBLOCK || !lockFile(descriptor_.get(), LOCK_SH | LOCK_NB)) {
    return errorFromErrno(errno);
  }

  struct stat status {};
  if (fstat(descriptor_.get(), &status) != 0) return errorFromErrno(errno);
  if (status.st_size < static_cast<off_t>(sizeof(Header))) return kInvalidHandle;
  void* const memory =
      mmap(nullptr, sizeof(Header), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor_.get(), 0);
  if (memory == MAP_FAILED) return errorFromErrno(errno);

  if (!alone) {
    header_ = static_cast<Header*>(memory);
    const bool matches = header_->magic == kMagic && header_->kind == static_cast<std::uint32_t>(kind);
    return matches ? kSuccess : kInvalidHandle;
  }
  std::memset(memory, 0, sizeof(Header));
  header_ = new (memory) Header{};
  header_->kind = static_cast<std::uint32_t>(kind);
  initialise(header_->payload);
  header_->magic = kMagic;
  return lockFile(descriptor_.get(), LOCK_SH) ? kSuccess : errorFromErrno(errno);
}

SharedObjectPtr SharedObjectPtr::open(const std::string& name, SharedObject::Kind kind, Access access,
                                      const std::function<void(void*)>& initialise, ErrorCode& error) {
  error = kSuccess;
  struct Deleter {
    void operator()(SharedObject* object) const { delete object; }
  };
  if (name.empty()) {
    std::unique_ptr<SharedObject, Deleter> object(new SharedObject(name));
    object->makePrivate(kind, initialise);
    return SharedObjectPtr(object.release());
  }
  OpenObjects& objects = openObjects();
  const std::lock_guard guard(objects.mutex);
  if (const auto found = objects.byName.find(name); found != objects.byName.end()) {
    if (found->second->header_->kind != static_cast<std::uint32_t>(kind)) {
      error = fail(kInvalidHandle);
      return {};
    }
    ++found->second->references_;
    return SharedObjectPtr(found->second);
  }
  std::unique_ptr<SharedObject, Deleter> object(new SharedObject(name));
  error = fail(object->map(kind, access, initialise));
  if (error != kSuccess) return {};
  objects.byName.emplace(name, object.get());
  return SharedObjectPtr(object.release());
}

SharedObjectPtr::~SharedObjectPtr() {
  if (object_ == nullptr) return;
  const bool held = object_->holds.load() != 0;
  OpenObjects& objects = openObjects();
  const std::lock_guard guard(objects.mutex);
  if (object_->references_ > 1) {
    --object_->references_;
  } else if (!held) {
    objects.byName.erase(object_->name_);
    delete object_;
  } else if (!object_->isShared()) {
    objects.heldWithoutName.push_back(object_);
  }
}

}  // namespace qvn::platform
