#include "home.h"

#include <stdlib.h>

#include <stdexcept>
#include <string>
#include <system_error>

namespace qvn::bench {

Home::Home() {
  std::string home = (std::filesystem::temp_directory_path() / "qvn-bench-XXXXXX").string();
  if (mkdtemp(home.data()) == nullptr) throw std::runtime_error("cannot make a state directory");
  path_ = home;
  setenv("QVN_HOME", path_.c_str(), 1);
}

Home::~Home() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace qvn::bench
