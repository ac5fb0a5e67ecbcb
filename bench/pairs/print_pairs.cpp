// Print jobs through the exported functions, against plain writes of the same bytes to the same sink.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "measure.h"
#include "pairs/pairs.h"
#include "qvn/qvn.h"
#include "qvn/result_codes.h"

extern char** environ;

namespace qvn::bench {
namespace {

constexpr std::uint64_t kKiB = 1024;
constexpr std::uint64_t kMiB = 1024 * kKiB;

// How long a client leaves a full queue alone.
constexpr std::chrono::milliseconds kRetryInterval{20};

// A job of blocks of one size: noise that ends with the end-of-job marker.
class Document {
 public:
  Document(std::uint64_t size, std::uint64_t blockSize)
      : blocks_(size / blockSize), block_(static_cast<std::size_t>(blockSize)) {
    std::mt19937 generator(7);
    for (std::uint8_t& byte : block_) byte = static_cast<std::uint8_t>(generator() % 255 + 1);
    last_ = block_;
    constexpr std::array<std::uint8_t, 8> kMarker = {0x1B, 0x2A, 0x82, 0x00, 0x00, 0x00, 0x00, 0xAC};
    std::copy(kMarker.begin(), kMarker.end(), last_.end() - kMarker.size());
  }

  std::uint64_t size() const { return blocks_ * block_.size(); }
  std::uint64_t blocks() const { return blocks_; }
  const std::vector<std::uint8_t>& block(std::uint64_t index) const {
    return index + 1 < blocks_ ? block_ : last_;
  }

 private:
  std::uint64_t blocks_;
  std::vector<std::uint8_t> block_;
  std::vector<std::uint8_t> last_;
};

class PrintJobs {
 public:
  PrintJobs(const Installation& installation, std::uint32_t printer, ByteSink& sink)
      : client_(installation.client()), printer_(printer), sink_(sink) {
    require(QvnOpenPrinter(client_, printer_), "QvnOpenPrinter");
  }
  ~PrintJobs() { QvnClosePrinter(client_, printer_); }
  PrintJobs(const PrintJobs&) = delete;
  PrintJobs& operator=(const PrintJobs&) = delete;

  // From the first write until the sink has it all.
  Seconds print(const Document& document) {
    sink_.expect(document.size());
    start();
    const Seconds taken = timeOf([&] {
      writeAll(document);
      sink_.wait();
    });
    end();
    return taken;
  }

  // The whole job, from before its start until after its end.
  Seconds printToTheEnd(const Document& document) {
    sink_.expect(document.size());
    const Seconds taken = timeOf([&] {
      start();
      writeAll(document);
      end();
    });
    sink_.wait();
    return taken;
  }

  // From the job's start until the sink has all of a file, which is read in blocks of that size.
  Seconds printFile(const std::string& file, std::uint64_t size, std::uint64_t blockSize) {
    std::vector<std::uint8_t> block(static_cast<std::size_t>(blockSize));
    sink_.expect(size);
    const Seconds taken = timeOf([&] {
      start();
      const int input = open(file.c_str(), O_RDONLY | O_CLOEXEC);
      for (;;) {
        const ssize_t got = read(input, block.data(), block.size());
        if (got <= 0) break;
        write(block.data(), static_cast<std::uint32_t>(got));
      }
      close(input);
      sink_.wait();
    });
    end();
    return taken;
  }

 private:
  void start() { require(QvnStartJobPrinter(client_, printer_, 1, "queue", "host", "job", "user"), "start"); }
  void end() { require(QvnEndJobPrinter(client_, printer_), "QvnEndJobPrinter"); }

  // A full queue is left alone for a while, as the command line does it.
  void write(const std::uint8_t* bytes, std::uint32_t size) {
    for (;;) {
      std::uint32_t written = 0;
      const std::uint32_t rc = QvnWritePrinter(client_, printer_, bytes, size, &written);
      if (rc == QRN_ERROR_SUCCESS && written == size) return;
      if (rc != QRN_ERROR_INSUFFICIENT_BUFFER) require(rc == 0 ? 1 : rc, "QvnWritePrinter");
      std::this_thread::sleep_for(kRetryInterval);
    }
  }

  void writeAll(const Document& document) {
    for (std::uint64_t i = 0; i < document.blocks(); ++i) {
      const std::vector<std::uint8_t>& block = document.block(i);
      write(block.data(), static_cast<std::uint32_t>(block.size()));
    }
  }

  std::uint32_t client_;
  std::uint32_t printer_;
  ByteSink& sink_;
};

// A loop of write(2) on a connection that is there already.
Seconds writePlainly(ByteSink& sink, const Document& document) {
  sink.expect(document.size());
  const PlainSocket socket(sink.port());
  return timeOf([&] {
    for (std::uint64_t i = 0; i < document.blocks(); ++i) {
      socket.writeAll(document.block(i).data(), document.block(i).size());
    }
    sink.wait();
  });
}

// socat, from its start until the sink has the file.
Seconds sendWithSocat(ByteSink& sink, const std::string& file, std::uint64_t size, std::uint64_t blockSize) {
  std::array<std::string, 6> words = {"socat",        "-u",
                                      "-b",           std::to_string(blockSize),
                                      "FILE:" + file, "TCP:127.0.0.1:" + std::to_string(sink.port())};
  std::array<char*, 7> arguments{};
  std::transform(words.begin(), words.end(), arguments.begin(),
                 [](std::string& word) { return word.data(); });
  sink.expect(size);
  pid_t socat = -1;
  const Seconds taken = timeOf([&] {
    if (posix_spawnp(&socat, "socat", nullptr, nullptr, arguments.data(), environ) != 0) {
      throw std::runtime_error("cannot start socat");
    }
    sink.wait();
  });
  int status = 0;
  waitpid(socat, &status, 0);
  if (status != 0) throw std::runtime_error("socat failed");
  return taken;
}

// The document as a file that lies in memory.
class DocumentFile {
 public:
  explicit DocumentFile(const Document& document)
      : path_("/dev/shm/qvn-bench-" + std::to_string(getpid()) + ".prn") {
    std::ofstream out(path_, std::ios::binary);
    for (std::uint64_t i = 0; i < document.blocks(); ++i) {
      const std::vector<std::uint8_t>& block = document.block(i);
      out.write(reinterpret_cast<const char*>(block.data()), static_cast<std::streamsize>(block.size()));
    }
    out.close();
    if (out.fail()) throw std::runtime_error("cannot write " + path_);
  }
  ~DocumentFile() { unlink(path_.c_str()); }
  DocumentFile(const DocumentFile&) = delete;
  DocumentFile& operator=(const DocumentFile&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

void measureMemory(PrintJobs& jobs, RatioTable& table) {
  const auto peakOf = [&](std::uint64_t size) {
    const Document document(size, 64 * kKiB);
    forgetPeakMemory();
    jobs.print(document);
    return peakMemory();
  };
  const double small = peakOf(64 * kMiB);
  table.atMost("print, direct: peak memory of 1 GiB / of 64 MiB",
               "a server needs no more memory for a large job than for a small one", 1.1,
               peakOf(1024 * kMiB) / small);
}

void measureDirect(PrintJobs& jobs, ByteSink& sink, RatioTable& table) {
  const struct {
    const char* name;
    std::uint64_t size;
    double ofPlainLoop;
    double ofSocat;
  } blocks[] = {{"64 KiB", 64 * kKiB, 1, 1}, {"1 MiB", kMiB, 0.95, 1.05}};
  for (const auto& block : blocks) {
    const std::string writes = std::string(", ") + block.name + " writes";
    const Document document(256 * kMiB, block.size);
    table.atLeast(
        "print, direct" + writes + ": throughput / plain write(2) loop",
        "going through the library slows no printer down", block.ofPlainLoop,
        medianRatio([&] { return writePlainly(sink, document); }, [&] { return jobs.print(document); }));
    const DocumentFile file(document);
    table.atLeast("print, direct" + writes + ": throughput / socat, same file",
                  "a file is at the printer sooner than a raw sender brings it there", block.ofSocat,
                  medianRatio([&] { return sendWithSocat(sink, file.path(), document.size(), block.size); },
                              [&] { return jobs.printFile(file.path(), document.size(), block.size); }));
  }
}

// The buffered path's waits; docs/performance.md derives the ceilings from them.
constexpr Seconds kIdlePoll = 0.075;
constexpr std::uint64_t kMostQueued = 11;  // the high mark, and the block that goes above it

// A sink that is always faster: all that can be queued goes out once in every idle poll.
void measureBufferedFast(PrintJobs& jobs, ByteSink& sink, RatioTable& table) {
  const struct {
    const char* name;
    std::uint64_t size;
    std::uint64_t blocks;
  } cases[] = {{"64 KiB", 64 * kKiB, 110}, {"1 MiB", kMiB, 132}};
  for (const auto& blocks : cases) {
    const Document document(blocks.blocks * blocks.size, blocks.size);
    const auto ceiling = [&] {
      const std::uint64_t polls = (document.blocks() + kMostQueued - 1) / kMostQueued;
      return static_cast<double>(polls) * kIdlePoll + writePlainly(sink, document);
    };
    table.atLeast(
        std::string("print, buffered, ") + blocks.name + " writes, fast device: throughput / ceiling",
        "buffered printing to a device without limits is as quick as its waits allow", 0.9,
        medianRatio(ceiling, [&] { return jobs.print(document); }));
  }
}

// A device slower than the library: it sets the pace, and the waits cost one idle poll at the end of a job of
// some seconds.
void measureBufferedSlow(const Installation& installation, PrintJobs& jobs, RatioTable& table) {
  const Document document(128 * kMiB, 64 * kKiB);
  const auto ceiling = [&] {
    installation.set("CpdPrinterMwo", 0);
    return jobs.printToTheEnd(document) + kIdlePoll;
  };
  const auto buffered = [&] {
    installation.set("CpdPrinterMwo", 1);
    return jobs.printToTheEnd(document);
  };
  table.atLeast("print, buffered, 64 KiB writes, device of 16 MiB/s: throughput / ceiling",
                "a quick office printer prints at its own pace while the program goes on", 0.95,
                medianRatio(ceiling, buffered));
}

}  // namespace

void measurePrinting(const Installation& installation, ByteSink& fast, ByteSink& slow, RatioTable& table) {
  {
    PrintJobs jobs(installation, kFastPrinter, fast);
    installation.set("CpdPrinterMwo", 0);
    measureMemory(jobs, table);
    measureDirect(jobs, fast, table);
    installation.set("CpdPrinterMwo", 1);
    measureBufferedFast(jobs, fast, table);
  }
  PrintJobs jobs(installation, kSlowPrinter, slow);
  measureBufferedSlow(installation, jobs, table);
}

}  // namespace qvn::bench
