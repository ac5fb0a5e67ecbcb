// The components that log lines are filtered by.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

#include "qvn/transport/log.h"

namespace qvn {

// A name and the mask of levels that are written for it unless the registry says otherwise.
class Component {
 public:
  Component(std::string name, std::uint32_t defaultMask);
  Component(const Component&) = delete;
  Component& operator=(const Component&) = delete;

  virtual const std::string& getName() const;
  virtual void setMask(std::uint32_t mask);
  virtual std::uint32_t getMask() const;
  virtual ~Component();

 private:
  std::string name_;
  std::atomic<std::uint32_t> mask_;
};

// The components of the vocabulary that the library shares with its companion programs, in its order. "All"
// holds for every component; the library itself logs under those that have a name here.
namespace log_component {

inline constexpr std::size_t kCount = 25;

Component& all();
Component& at(std::size_t index);
// Null when the vocabulary does not have the name.
const Component* find(std::string_view name);

inline Component& bidi() { return at(0); }
inline Component& comServer() { return at(3); }
inline Component& printMonitor() { return at(13); }
inline Component& server() { return at(14); }
inline Component& serverHid() { return at(15); }

}  // namespace log_component
}  // namespace qvn
