#include "support/kept_log/kept_log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "common/logging/basic_logger.h"
#include "platform/files/paths.h"
#include "platform/threads/thread.h"
#include "qvn/transport/settings.h"
#include "support/content_of.h"
#include "support/fake_transport.h"
#include "support/registry_values.h"

namespace qvn::test {
namespace {

std::filesystem::path logFile() { return platform::nativePath("c:\\qr__.log"); }

// A line of the test's among those of the library, indented as they are.
void write(const char* who, const std::string& text) {
  try {
    BasicLogger::getInstance().log(Component(who, 0), log_level::kDetail, text);
  } catch (const std::exception&) {
    // Before the library has a logger, and after it.
  }
}

// What differs from run to run, by the order in which it appears.
class Names {
 public:
  std::string replace(std::string text) {
    static const std::regex kPointer("0x[0-9a-f]{8,}");
    for (std::smatch found; std::regex_search(text, found, kPointer);) {
      const auto name =
          names_.try_emplace(found.str(), "<pointer " + std::to_string(names_.size() + 1) + ">");
      text = found.prefix().str() + name.first->second + found.suffix().str();
    }
    static const std::regex kModule("/[^ ]*/([^/ ]+[.]so)");
    return std::regex_replace(text, kModule, "$1");
  }

 private:
  std::map<std::string, std::string> names_;
};

std::vector<std::string> splitIntoLines(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// Says once what is there three times or more in a row.
std::string folded(const std::vector<std::string>& lines) {
  constexpr std::size_t kLongest = 32;
  std::string text;
  for (std::size_t at = 0; at < lines.size();) {
    std::size_t length = 1;
    std::size_t times = 1;
    for (; length <= kLongest; ++length) {
      const auto begin = lines.begin() + static_cast<std::ptrdiff_t>(at);
      const auto end = begin + static_cast<std::ptrdiff_t>(std::min(length, lines.size() - at));
      for (times = 1; (times + 1) * length <= lines.size() - at; ++times) {
        if (!std::equal(begin, end, begin + static_cast<std::ptrdiff_t>(times * length))) break;
      }
      if (times > 2) break;
    }
    if (times < 3) length = 1, times = 1;
    for (std::size_t i = 0; i < length; ++i) text += lines[at + i] + "\n";
    if (times > 1) {
      text += "(" + std::to_string(length) + (length == 1 ? " line, " : " lines, ") + std::to_string(times) +
              " times)\n";
    }
    at += length * times;
  }
  return text;
}

}  // namespace

KeptLog::KeptLog() : thread_(platform::currentThreadId()) {
  log = this;
  for (const auto& [name, value] : {std::pair{"startLog", 1u},
                                    {"All", 0xFFFFFFFFu},
                                    {"Clocktime_In_Header", 0u},
                                    {"Thread_Id_In_Header", 1u}}) {
    store(std::string(kLibraryRegistryRoot) + "Logger", name, value);
  }
  FakeTransport::instance().onRecord = [](const std::string& call) { write("transport", call); };
}

void KeptLog::scene(const std::string& name) { write("", name); }
void KeptLog::besideOthers(const std::function<void()>& work) {
  write("beside", "begin");
  work();
  write("beside", "end");
}
void KeptLog::heard(const std::string& what) { write("client", "hears " + what); }
void KeptLog::gave(const std::string& call, std::uint32_t rc) {
  write("client", call + " gave " + std::to_string(rc));
}

std::size_t KeptLog::times(const std::string& text) const {
  const std::string content = contentOf(logFile());
  std::size_t found = 0;
  for (std::size_t at = 0; (at = content.find(text, at)) != std::string::npos; at += text.size()) ++found;
  return found;
}

void KeptLog::expectKept(const std::string& room, const std::string& name) {
  std::istringstream file(contentOf(logFile()));
  ASSERT_NE(file.peek(), EOF) << "no log: one such test in a process, as ctest runs them";
  static const std::regex kLine("tid=([0-9a-f]+) (.{25}) (.*)");
  Names names;
  std::vector<std::string> lines;
  std::optional<std::ptrdiff_t> beside;
  const auto isScripts = [](const std::string& line) { return line.starts_with("  "); };
  for (std::string line; std::getline(file, line);) {
    if (line.ends_with('\r')) line.pop_back();
    std::smatch part;
    if (!std::regex_match(line, part, kLine)) {
      if (!lines.empty())
        lines.back() += line.empty() ? "\n" : "\n            " + line;  // of a text of several lines
      continue;
    }
    std::string component = part[2].str().substr(0, part[2].str().find_last_not_of(' ') + 1);
    std::string text = names.replace(part[3]);
    if (component.empty()) {
      lines.push_back("\n== " + text);
      continue;
    }
    if (component == "beside") {
      if (beside) std::stable_partition(lines.begin() + *beside, lines.end(), isScripts);
      beside = text == "begin" ? std::optional(static_cast<std::ptrdiff_t>(lines.size())) : std::nullopt;
      continue;
    }
    component.resize(std::max<std::size_t>(component.size(), 10), ' ');
    if (text.ends_with(' ')) text += '$';
    lines.push_back((std::stoul(part[1], nullptr, 16) == thread_ ? "  " : "* ") + component + text);
  }
  const std::string now = folded(lines);
  const std::filesystem::path kept =
      std::filesystem::path(QVN_TESTS_DIRECTORY) / room / "kept" / (name + ".log");
  if (std::getenv("QVN_WRITE_KEPT") != nullptr) {
    create_directories(kept.parent_path());
    std::ofstream(kept, std::ios::binary) << now;
  }
  // The difference alone; a comparison of the texts would print both.
  EXPECT_TRUE(contentOf(kept) == now)
      << kept << ": differs so; where it should, run this again with QVN_WRITE_KEPT=1\n"
      << testing::internal::edit_distance::CreateUnifiedDiff(splitIntoLines(contentOf(kept)),
                                                             splitIntoLines(now));
}

}  // namespace qvn::test
