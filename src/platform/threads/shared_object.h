// The memory of an event or a mutex: a file in the state directory that every process which opens the
// object's name maps, or plain memory of this process for an object without a name.
//
// An object lives as long as some process has it open. Its file may outlive it (and even the machine's run),
// so whoever opens a file that nobody else has open makes the object anew.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/base/access.h"
#include "platform/base/error.h"
#include "platform/base/unique_descriptor.h"

namespace qvn::platform {

class SharedObject {
 public:
  enum class Kind : std::uint32_t { Event = 1, Mutex = 2 };

  // Room for the object's own data, at an address good for any type.
  static constexpr std::size_t kPayloadSize = 256;

  SharedObject(const SharedObject&) = delete;
  SharedObject& operator=(const SharedObject&) = delete;

  void* payload() const;

  // Objects with a name may change hands with other processes, which can be killed at any point.
  bool isShared() const { return !name_.empty(); }

  // How often a thread of this process holds the object. While it is not 0 the memory stays, whoever lets go
  // of the object: a thread's list of the robust mutexes that it holds runs through it.
  std::atomic<std::uint32_t> holds{0};

 private:
  friend class SharedObjectPtr;
  struct Header;

  explicit SharedObject(std::string name) : name_(std::move(name)) {}
  ~SharedObject();
  ErrorCode map(Kind kind, Access access, const std::function<void(void*)>& initialise);
  void makePrivate(Kind kind, const std::function<void(void*)>& initialise);

  const std::string name_;
  UniqueDescriptor descriptor_;  // Holds a shared file lock: somebody has the object open.
  Header* header_ = nullptr;
  std::uint32_t references_ = 1;
};

// One reference to an object; the last one of the process closes it.
class SharedObjectPtr {
 public:
  SharedObjectPtr() = default;
  SharedObjectPtr(SharedObjectPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  SharedObjectPtr& operator=(SharedObjectPtr&&) = delete;
  ~SharedObjectPtr();

  // Opens the object of that name, or makes it: `initialise` then fills its payload (zeros before) while no
  // other process can open it. Empty on failure, with `error` set: 6 when the name is another kind's, 206
  // when it is too long.
  static SharedObjectPtr open(const std::string& name, SharedObject::Kind kind, Access access,
                              const std::function<void(void*)>& initialise, ErrorCode& error);

  explicit operator bool() const { return object_ != nullptr; }
  SharedObject* operator->() const { return object_; }

 private:
  explicit SharedObjectPtr(SharedObject* object) : object_(object) {}

  SharedObject* object_ = nullptr;
};

}  // namespace qvn::platform
