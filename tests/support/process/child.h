// Programs run as a person runs them: as processes, with their output read and their end waited for. Every
// wait has a limit, and a process that is still there when its object goes is ended by its id.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qvn::test {

class Child {
 public:
  // Starts the program; `environment` adds to this process's. Throws std::runtime_error when it cannot.
  explicit Child(const std::vector<std::string>& command,
                 const std::vector<std::pair<std::string, std::string>>& environment = {});
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  pid_t id() const { return id_; }
  void write(const std::string& text);
  void closeInput();
  void signal(int number) const;

  // The next line of standard output, without its end. None when the output ends, or no line comes within the
  // limit.
  std::optional<std::string> readLine();
  // The same of standard error.
  std::optional<std::string> readErrorLine();

  // Waits for the end and returns the exit code, 128 + n when ended by signal n; 999 when the limit passed or
  // the end was waited for before.
  int wait();

  // What has come so far, lines that were read excepted.
  const std::string& output() const { return output_; }
  const std::string& errors() const { return errors_; }

 private:
  // Reads what comes on either pipe; false when both have ended or the limit has passed.
  bool readSome();
  std::optional<std::string> readLine(const int& pipe, std::string& text);

  pid_t id_ = -1;
  int input_ = -1;
  int outputPipe_ = -1;
  int errorPipe_ = -1;
  std::string output_;
  std::string errors_;
};

// A finished run.
struct Result {
  int exitCode;
  std::string output;
  std::string errors;
};

// Runs the program to its end with the text as its input.
Result run(const std::vector<std::string>& command, const std::string& input = "",
           const std::vector<std::pair<std::string, std::string>>& environment = {});

// Runs qvn.
Result qvn(std::vector<std::string> arguments, const std::string& input = "");

}  // namespace qvn::test
