// AcquiredObject: a reference on a device's object in its handle table, for a scope.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

namespace qvn {

template <typename Table, typename Object>
class AcquiredObject {
 public:
  explicit AcquiredObject(std::uint32_t handle)
      : handle_(handle), object_(Table::getInstance().acquire(handle)), held_(object_ != nullptr) {}
  ~AcquiredObject() {
    if (held_) Table::getInstance().release(handle_);
  }
  AcquiredObject(const AcquiredObject&) = delete;
  AcquiredObject& operator=(const AcquiredObject&) = delete;

  // Leaves the reference in the table: an open device keeps it until it is closed.
  void keep() { held_ = false; }

  explicit operator bool() const { return object_ != nullptr; }
  Object& operator*() const { return *object_; }
  Object* operator->() const { return object_.get(); }

 private:
  std::uint32_t handle_;
  std::shared_ptr<Object> object_;
  bool held_;
};

}  // namespace qvn
