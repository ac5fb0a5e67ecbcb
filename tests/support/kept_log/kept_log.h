// What a scripted use of the library does, as one text that is compared with the file that is kept of it: the
// log at its most detailed, and among its lines what reaches the fake transport and what clients call and
// hear.
//
// A line begins with "*" where another thread than the script's wrote it. It ends with "$" where it would end
// with a blank. With QVN_WRITE_KEPT=1 the files are written, not compared.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace qvn::test {

// A base of fixtures, before the library: the registry has to say what is logged before the library looks.
// The library ends the log of its process for good, so there is one such test in a process.
class KeptLog {
 public:
  KeptLog();
  KeptLog(const KeptLog&) = delete;
  KeptLog& operator=(const KeptLog&) = delete;

  // What follows, in words.
  void scene(const std::string& name);
  // Runs what other threads write beside; the script's lines come first in the text, whoever was faster.
  void besideOthers(const std::function<void()>& work);
  // What a client hears.
  void heard(const std::string& what);
  // What a client called, when it is over, and what it got.
  void gave(const std::string& call, std::uint32_t rc);

  // How often it has been written so far.
  std::size_t times(const std::string& text) const;

  // Compares all that was written with tests/<room>/kept/<name>.log.
  void expectKept(const std::string& room, const std::string& name);

 protected:
  // The test's, for callbacks, which have no argument to carry it.
  static inline KeptLog* log = nullptr;

 private:
  const std::uint32_t thread_;
};

}  // namespace qvn::test
