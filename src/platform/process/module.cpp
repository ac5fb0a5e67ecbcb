#include "platform/process/module.h"

#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/base/failure.h"
#include "platform/base/unique_descriptor.h"
#include "platform/threads/system_threads.h"

namespace qvn::platform {
namespace {

namespace fs = std::filesystem;

class NativeModule final : public Module {
 public:
  explicit NativeModule(void* handle) : handle_(handle) {}
  ~NativeModule() override {
    endWaitingThreads();  // they may have thread-local objects of the module
    dlclose(handle_);
  }
  NativeModule(const NativeModule&) = delete;
  NativeModule& operator=(const NativeModule&) = delete;

  void* find(const char* symbol, ErrorCode& error) const override {
    void* const address = symbol != nullptr ? dlsym(handle_, symbol) : nullptr;
    error = address != nullptr ? kSuccess : fail(kProcedureNotFound);
    return address;
  }

  const void* identity() const override { return handle_; }

 private:
  void* const handle_;
};

struct Failure {
  ErrorCode code = kSuccess;
  std::string detail;
};

std::vector<fs::path> splitSearchPath(std::string_view list) {
  std::vector<fs::path> directories;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(':'), list.size());
    if (end > 0) directories.emplace_back(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return directories;
}

// The directories that the dynamic linker searches, but for those that its cache, which is root's, adds.
std::vector<fs::path> systemDirectories() {
  std::vector<fs::path> directories;
  void* const self = dlopen(nullptr, RTLD_LAZY);
  Dl_serinfo size{};
  if (self != nullptr && dlinfo(self, RTLD_DI_SERINFOSIZE, &size) == 0) {
    std::vector<std::max_align_t> buffer(size.dls_size / sizeof(std::max_align_t) + 1);
    auto* const info = reinterpret_cast<Dl_serinfo*>(buffer.data());
    *info = size;
    if (dlinfo(self, RTLD_DI_SERINFO, info) == 0) {
      const Dl_serpath* const paths = info->dls_serpath;
      for (unsigned i = 0; i < info->dls_cnt; ++i) directories.emplace_back(paths[i].dls_name);
    }
  }
  if (self != nullptr) dlclose(self);
  return directories;
}

std::vector<fs::path> searchDirectories() {
  const char* const own = std::getenv("QVN_TRANSPORT_PATH");
  std::vector<fs::path> directories = splitSearchPath(own != nullptr ? own : "");
  directories.push_back(installedDirectory() / "transports");
  for (fs::path& directory : systemDirectories()) directories.push_back(std::move(directory));
  return directories;
}

// The file that `name` stands for; empty when only the dynamic linker may know it.
fs::path locate(const std::string& name) {
  if (name.find('/') != std::string::npos) return name;
  for (const fs::path& directory : searchDirectories()) {
    std::error_code error;
    fs::path candidate = directory / name;
    if (fs::exists(candidate, error)) return candidate;
  }
  return {};
}

// Whether nobody but root and the current user can change what `path` names.
Failure checkOwner(const fs::path& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    const ErrorCode code = errno == ENOENT || errno == ENOTDIR ? kModuleNotFound : errorFromErrno(errno);
    return {code, path.string() + " cannot be looked at"};
  }
  if (status.st_uid != 0 && status.st_uid != geteuid()) {
    return {kAccessDenied, path.string() + " belongs to another user"};
  }
  if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
    return {kAccessDenied, path.string() + " can be written by others than its owner"};
  }
  return {};
}

// `path` becomes the one that was looked at, without links.
Failure checkTrusted(fs::path& path) {
  std::error_code error;
  fs::path real = fs::canonical(path, error);
  if (error) {
    const bool missing = error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
    return {missing ? kModuleNotFound : errorFromErrno(error.value()),
            path.string() + ": " + error.message()};
  }
  Failure failure = checkOwner(real.parent_path());
  if (failure.code == kSuccess) failure = checkOwner(real);
  path = std::move(real);
  return failure;
}

// Whether the file holds all that its headers say is in it. The dynamic linker maps what they promise and
// would die of a bus error in a file that was cut short.
Failure checkWhole(const fs::path& path) {
  const UniqueDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status {};
  if (!file || fstat(file.get(), &status) != 0)
    return {errorFromErrno(errno), path.string() + " cannot be read"};
  const auto size = static_cast<std::uint64_t>(status.st_size);
  const auto read = [&](std::uint64_t offset, auto& record) {
    return offset < size &&
           pread(file.get(), &record, sizeof record, static_cast<off_t>(offset)) == ssize_t{sizeof record};
  };
  ElfW(Ehdr) header{};
  if (!S_ISREG(status.st_mode) || !read(0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
    return {kBadExecutableFormat, path.string() + " is not a module"};
  }
  for (unsigned i = 0; i < header.e_phnum; ++i) {
    ElfW(Phdr) segment{};
    const bool whole = read(header.e_phoff + std::uint64_t{i} * sizeof segment, segment) &&
                       segment.p_offset <= size && segment.p_filesz <= size - segment.p_offset;
    if (!whole) return {kBadExecutableFormat, path.string() + " is cut short"};
  }
  return {};
}

std::string linkerMessage() {
  const char* const message = dlerror();
  return message != nullptr ? message : "";
}

const link_map* linkMap(void* handle) {
  link_map* map = nullptr;
  return dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 ? map : nullptr;
}

void* open(const std::string& name, Failure& failure) {
  if (name.empty() || name.find('\0') != std::string::npos) {
    failure = {kModuleNotFound, "the module has no name"};
    return nullptr;
  }
  fs::path path = locate(name);
  if (!path.empty()) {
    failure = checkTrusted(path);
    if (failure.code == kSuccess) failure = checkWhole(path);
    if (failure.code != kSuccess) return nullptr;
    void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) failure = {kBadExecutableFormat, linkerMessage()};
    return handle;
  }
  void* const handle = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    failure = {kModuleNotFound, linkerMessage()};
    return nullptr;
  }
  const link_map* const map = linkMap(handle);
  fs::path loaded = map != nullptr ? map->l_name : "";
  failure = map != nullptr ? checkTrusted(loaded) : Failure{kAccessDenied, name + " has no file"};
  if (failure.code == kSuccess) return handle;
  dlclose(handle);
  return nullptr;
}

}  // namespace

Module::~Module() = default;

std::unique_ptr<Module> Module::load(const std::string& name, ErrorCode& error, std::string* detail) {
  Failure failure;
  void* const handle = open(name, failure);
  error = fail(failure.code);
  if (detail != nullptr) *detail = failure.detail;
  if (handle == nullptr) return nullptr;
  return std::make_unique<NativeModule>(handle);
}

std::string modulePath(const void* address) {
  Dl_info info{};
  void* extra = nullptr;
  if (dladdr1(address, &info, &extra, RTLD_DL_LINKMAP) == 0) return {};
  const auto* const map = static_cast<const link_map*>(extra);
  std::error_code error;
  // The program itself has no name in the linker's list.
  const bool program = map == nullptr || map->l_name == nullptr || *map->l_name == '\0';
  const fs::path path =
      program ? fs::read_symlink("/proc/self/exe", error) : fs::canonical(map->l_name, error);
  return error ? std::string(info.dli_fname) : path.string();
}

std::filesystem::path installedDirectory() {
  static const char anchor = 0;
  return std::filesystem::path(modulePath(&anchor)).parent_path() / "qvn";
}

}  // namespace qvn::platform
