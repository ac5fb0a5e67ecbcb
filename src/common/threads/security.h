// Who may use the kernel objects, files and registry keys that the library makes.
#pragma once

#include "platform/base/access.h"
#include "platform/registry/registry.h"

namespace qvn {

class Security {
 public:
  virtual ~Security() = 0;
  Security(const Security&) = delete;
  Security& operator=(const Security&) = delete;

  // What an object is created with; the system's default while security is not in force.
  virtual const platform::Access& getSecurityAttributes() const;

  // True when the system has access control at all (the NT family).
  bool isInForce() const { return inForce_; }

 protected:
  Security();

  platform::Access attributes_;

 private:
  bool inForce_;
};

// Full access for every account that may enter the state directory.
class SecurityEveryone : public Security {
 public:
  explicit SecurityEveryone(bool inheritable);
  ~SecurityEveryone() override;
};

}  // namespace qvn
