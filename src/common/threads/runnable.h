// What a Thread runs.
#pragma once

#include <cstdint>

namespace qvn {

// Owned by whoever made it, never by the thread.
class Runnable {
 public:
  virtual ~Runnable() = default;

  // The value becomes the thread's exit code.
  virtual std::uint32_t run() = 0;
};

// Runs a member operation of an object.
template <typename Object>
class MethodRunnable : public Runnable {
 public:
  using Method = std::uint32_t (Object::*)();

  MethodRunnable(Object& object, Method method) : object_(object), method_(method) {}

  std::uint32_t run() override { return (object_.*method_)(); }

 private:
  Object& object_;
  Method method_;
};

// Runs a plain function with one argument.
class FunctionRunnable : public Runnable {
 public:
  using Function = std::uint32_t (*)(void*);

  FunctionRunnable(void* argument, Function function) : argument_(argument), function_(function) {}

  std::uint32_t run() override { return function_(argument_); }

 private:
  void* argument_;
  Function function_;
};

}  // namespace qvn
