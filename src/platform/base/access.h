// Who may use an object that several processes share (a registry key, a named mutex or event, a file).
#pragma once

namespace qvn::platform {

struct Access {
  // Open to every account that may enter the state directory; otherwise to the creating account only.
  bool everyone = false;
  // Objects created below this one take its access.
  bool inheritable = false;
};

}  // namespace qvn::platform
