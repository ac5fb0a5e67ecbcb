// ObjectStoreCommand: a request to an object store, as far as its reply is concerned.
#pragma once

#include <cstdint>
#include <string_view>

namespace qvn {

class ObjectStoreCommand {
 public:
  explicit ObjectStoreCommand(std::uint32_t requestId) : requestId_(requestId) {}
  virtual ~ObjectStoreCommand() = default;

  // Whether the document is a response to this request, or the exception that it raised.
  virtual bool matches(std::string_view document) const;
  virtual bool matches(std::string_view document, bool& isException) const;

 private:
  const std::uint32_t requestId_;
};

}  // namespace qvn
