// The registry's file: several processes, sudden death, full disks and damage.
#include <gmock/gmock.h>
#include <lmdb.h>
#include <stdlib.h>
#include <sys/resource.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <thread>

#include "platform/files/paths.h"
#include "platform/registry/keys.h"
#include "support/content_of.h"
#include "support/process/forked.h"

namespace qvn::platform::registry {
namespace {

namespace fs = std::filesystem;
using test::contentOf;
using test::Forked;
using test::inOwnProcess;
using testing::HasSubstr;

int numberOf(const Key& key, std::string_view name) {
  Value value;
  return getValue(key, name, value) == kSuccess ? std::stoi(value.data) : -1;
}

// A store of the test's own: nothing of this process has it open, so what is done to its file or to the
// limits of who opens it is done to processes that the test forks.
class RegistryStoreTest : public testing::Test {
 protected:
  RegistryStoreTest() { fs::create_directory(aside()), moveStore(stateDirectory(), aside()); }
  ~RegistryStoreTest() override { moveStore(aside(), stateDirectory()), fs::remove(aside()); }

 private:
  static fs::path aside() { return stateDirectory() / "aside"; }
  static void moveStore(const fs::path& from, const fs::path& to) {
    for (const char* const file : {"registry.mdb", "registry.mdb-lock"}) {
      fs::remove(to / file);
      if (fs::exists(from / file)) fs::rename(from / file, to / file);
    }
  }
};

fs::path storeFile() { return stateDirectory() / "registry.mdb"; }

void replaceContent(const fs::path& file, std::string_view content) {
  std::ofstream(file, std::ios::binary | std::ios::trunc) << content;
}

// A store with a few keys and values, made by a process that is gone.
std::string makeStore() {
  Forked maker([] {
    Key key;
    return static_cast<int>(transaction([&] {
      for (int i = 0; i < 200; ++i) {
        if (const ErrorCode error = make("Key" + std::to_string(i) + "\\Sub", key); error != kSuccess)
          return error;
        if (const ErrorCode error = setString(key, "Value", std::string(100, 'v')); error != kSuccess)
          return error;
      }
      return setString(key, "Long", std::string(20'000, 'l'));
    }));
  });
  EXPECT_EQ(maker.wait(), 0);
  return contentOf(storeFile());
}

TEST(RegistryStore, ProcessesAndThreadsWriteSideBySide) {
  constexpr int kProcesses = 3;
  constexpr int kEach = 15;
  {
    std::vector<std::unique_ptr<Forked>> writers;
    for (int process = 0; process < kProcesses; ++process) {
      writers.push_back(std::make_unique<Forked>([process] {
        std::vector<std::thread> threads;
        std::atomic<int> failures{0};
        for (const char* const thread : {"a", "b"}) {
          threads.emplace_back([&failures, thread, process] {
            for (int i = 0; i < kEach; ++i) {
              Key key;
              const std::string name = std::to_string(process) + thread + std::to_string(i);
              if (make("Shared\\" + name, key) != kSuccess || setString(key, "x", name) != kSuccess)
                ++failures;
            }
          });
        }
        for (std::thread& thread : threads) thread.join();
        return failures.load();
      }));
    }
    for (const auto& writer : writers) EXPECT_EQ(writer->wait(), 0);
  }
  Key key;
  std::vector<std::string> names;
  ASSERT_EQ(make("Shared", key), kSuccess);
  ASSERT_EQ(listSubkeys(key, 1000, names), kSuccess);
  EXPECT_EQ(names.size(), std::size_t{kProcesses * 2 * kEach});
}

TEST(RegistryStore, ThreadsThatComeAndGoLeaveNoReaderBehind) {
  constexpr int kMoreThanThereAreSlots = 4200;
  Key key;
  ASSERT_EQ(make("Threads", key), kSuccess);
  for (int i = 0; i < kMoreThanThereAreSlots; ++i) {
    ErrorCode error = kSuccess;
    std::thread([&] { error = openKey(Hive::LocalMachine, "Threads", key); }).join();
    ASSERT_EQ(error, kSuccess) << "thread " << i << ": " << lastFailure();
  }
}

TEST_F(RegistryStoreTest, AReaderThatWasKilledDoesNotKeepTheStoreFromShrinking) {
  setenv("QVN_REGISTRY_MAP_SIZE", "1048576", 1);
  inOwnProcess([] {
    Key key;
    ASSERT_EQ(make("Readers", key), kSuccess);
    ASSERT_EQ(setString(key, "value", std::string(100'000, 'a')), kSuccess);
    test::Pipe reading;
    Forked reader([&] {
      return static_cast<int>(readValue(key, "value", [&](ValueType, std::string_view) {
        reading.tell(1);
        pause();
      }));
    });
    ASSERT_EQ(reading.hear(), 1);
    reader.kill();
    for (int i = 0; i < 40; ++i) {
      ASSERT_EQ(setString(key, "value", std::string(100'000, 'b')), kSuccess) << i << ": " << lastFailure();
    }
  });
}

TEST_F(RegistryStoreTest, AFullStoreRefusesTheWriteAndStaysReadable) {
  setenv("QVN_REGISTRY_MAP_SIZE", "262144", 1);
  inOwnProcess([] {
    Key key;
    const std::string tooMuch(500'000, 'b');
    ASSERT_EQ(make("Full", key), kSuccess);
    ASSERT_EQ(setString(key, "first", "1"), kSuccess);
    EXPECT_EQ(setString(key, "big", tooMuch), kDiskFull);
    EXPECT_THAT(lastFailure(), HasSubstr(storeFile().string() + " cannot grow"));
    int stored = 0;
    ErrorCode error = kSuccess;
    while ((error = setString(key, "v" + std::to_string(stored), std::string(1000, 'v'))) == kSuccess)
      ++stored;
    EXPECT_EQ(error, kDiskFull);
    EXPECT_GT(stored, 10);
    EXPECT_EQ(transaction([&] { return setString(key, "one", tooMuch); }), kDiskFull);
    EXPECT_NE(transaction([&] {
                static_cast<void>(setString(key, "one", tooMuch));
                return kSuccess;
              }),
              kSuccess)
        << "a transaction whose failure was overlooked";
    EXPECT_EQ(numberOf(key, "first"), 1);
    EXPECT_EQ(deleteValue(key, "v0"), kSuccess) << "room can be made";
  });
}

TEST_F(RegistryStoreTest, AFileSizeLimitRefusesTheWriteAndLeavesTheProcessAlive) {
  makeStore();
  inOwnProcess([] {
    Key key;
    ASSERT_EQ(make("Limited", key), kSuccess);
    ASSERT_EQ(setString(key, "first", "1"), kSuccess);
    const auto size = static_cast<rlim_t>(fs::file_size(storeFile()));
    const rlimit limit{.rlim_cur = size, .rlim_max = size};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    EXPECT_EQ(setString(key, "big", std::string(500'000, 'b')), kDiskFull);
    EXPECT_EQ(numberOf(key, "first"), 1);
  });
}

// What every operation answers, when all answer the same; else 0.
ErrorCode answerOfAll() {
  Key key;
  const ErrorCode answer = openKey(Hive::LocalMachine, "Key1", key);
  const bool same = make("Key1", key) == answer && make("New", key) == answer && flush() == answer &&
                    transaction([] { return kSuccess; }) == answer;
  return same ? answer : kSuccess;
}

TEST_F(RegistryStoreTest, ADamagedFileIsRefusedAndLeftAsItIs) {
  const std::string sound = makeStore();
  const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const std::string foreign = [] {
    const fs::path file = stateDirectory() / "foreign.mdb";
    MDB_env* environment = nullptr;
    mdb_env_create(&environment);
    EXPECT_EQ(mdb_env_open(environment, file.c_str(), MDB_NOSUBDIR | MDB_NOLOCK, 0600), 0);
    MDB_txn* transaction = nullptr;
    mdb_txn_begin(environment, nullptr, 0, &transaction);
    MDB_dbi map = 0;
    mdb_dbi_open(transaction, nullptr, 0, &map);
    char text[] = "something else";
    MDB_val value{sizeof text, text};
    mdb_put(transaction, map, &value, &value, 0);
    mdb_txn_commit(transaction);
    mdb_env_close(environment);
    return contentOf(file);
  }();
  const struct {
    const char* name;
    std::string content;
    const char* message;
  } cases[] = {
      {"empty", "", "it is empty"},
      {"text", std::string(100'000, 'x'), "it is not a registry"},
      {"zeros", std::string(sound.size(), '\0'), "it is not a registry"},
      {"less than a page", sound.substr(0, 100), "it is too short"},
      {"one page", sound.substr(0, page), "it is too short"},
      {"only the heads", sound.substr(0, 2 * page), "its end is missing"},
      {"half", sound.substr(0, sound.size() / 2), "its end is missing"},
      {"all but the last byte", sound.substr(0, sound.size() - 1), "its end is missing"},
      {"garbage after the heads", sound.substr(0, 2 * page) + std::string(sound.size() - 2 * page, 'g'),
       "page"},
      {"another program's", foreign, "it is not a registry"},
  };
  for (const auto& c : cases) {
    replaceContent(storeFile(), c.content);
    inOwnProcess([&] {
      EXPECT_EQ(answerOfAll(), kRegistryCorrupt) << c.name;
      EXPECT_THAT(lastFailure(), HasSubstr(c.message)) << c.name;
      EXPECT_TRUE(contentOf(storeFile()) == c.content) << c.name;
      replaceContent(storeFile(), sound);
      EXPECT_EQ(answerOfAll(), kSuccess) << c.name << ": once the file is put right";
    });
  }
}

TEST_F(RegistryStoreTest, NoFlippedByteCrashesAReaderOrAWriter) {
  constexpr int kRounds = 100;
  constexpr int kSound = 100;  // Unlike any code of a process that crashes.
  constexpr int kDamaged = 101;
  const std::string sound = makeStore();
  std::minstd_rand random(11);
  int refused = 0;
  for (int round = 0; round < kRounds; ++round) {
    std::string content = sound;
    const std::size_t flips = 1 + random() % 3;
    for (std::size_t i = 0; i < flips; ++i) {
      // Mostly where pages have their headers, sometimes anywhere.
      std::size_t offset = random() % content.size();
      if (random() % 4 != 0) offset = offset / 4096 * 4096 + offset % 64;
      content[offset] = static_cast<char>(random());
    }
    replaceContent(storeFile(), content);
    Forked user([] {
      Key key;
      bool sawDamage = false;
      const auto see = [&](ErrorCode error) { sawDamage = sawDamage || error == kRegistryCorrupt; };
      for (int i = 0; i < 200; i += 7) {
        see(openKey(Hive::LocalMachine, "Key" + std::to_string(i) + "\\Sub", key));
        Value value;
        see(getValue(key, "Value", value));
      }
      std::vector<std::string> names;
      see(openKey(Hive::LocalMachine, "", key));
      see(listSubkeys(key, 1000, names));
      see(transaction([&] {
        ErrorCode error = make("New", key);
        if (error == kSuccess) error = setString(key, "Value", std::string(20'000, 'n'));
        return error;
      }));
      return sawDamage ? kDamaged : kSound;
    });
    const int code = user.wait();
    EXPECT_TRUE(code == kSound || code == kDamaged) << "round " << round << " ended with " << code;
    if (code == kDamaged) ++refused;
  }
  EXPECT_GT(refused, kRounds / 4);
}

}  // namespace
}  // namespace qvn::platform::registry
