// A client as any driver author writes one: initialises the library, reads an attribute of one stored
// printer, tells so, waits for the go, reads as many more as it is told to, tells so and ends.
//
// usage: stored_read FIRST COUNT CALLS, of COUNT stored printers whose handles begin at FIRST
#include <cstdint>
#include <cstdlib>

#include "qvn/attributes.h"
#include "qvn/qvn.h"
#include "startup/progress.h"

namespace {

// Walks over all stored printers without any order that a cache could follow.
constexpr std::uint32_t kStride = 3793;

std::uint32_t number(const char* text) { return static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10)); }

bool readsHandle(std::uint32_t client, std::uint32_t handle) {
  std::uint32_t value = 0;
  return QvnGetLongPrinter(client, handle, QVN_ATTRIBUTE_HANDLE, &value) == 0 && value == handle;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const std::uint32_t first = number(argv[1]);
  const std::uint32_t count = number(argv[2]);
  const std::uint32_t calls = number(argv[3]);
  std::uint32_t client = 0;
  if (QvnInitialize() != 0 || QvnGetClientId(&client) != 0) return 1;
  std::uint32_t place = count / 2;
  if (!readsHandle(client, first + place) || !qvn::bench::tell()) return 1;
  qvn::bench::waitForGo();
  for (std::uint32_t call = 0; call < calls; ++call) {
    place = (place + kStride) % count;
    if (!readsHandle(client, first + place)) return 1;
  }
  if (!qvn::bench::tell()) return 1;
  QvnUninitialize();
  return 0;
}
