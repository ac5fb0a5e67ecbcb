// A state directory of the program's own, in force while this lives.
#pragma once

#include <filesystem>

namespace qvn::bench {

class Home {
 public:
  Home();
  ~Home();
  Home(const Home&) = delete;
  Home& operator=(const Home&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace qvn::bench
