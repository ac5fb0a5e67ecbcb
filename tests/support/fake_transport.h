// A transport inside the test's own process: the library loads it as the module it is, the test scripts what
// its devices do and reads back what the library asked of it.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "qvn/transport/device.h"
#include "qvn/transport/plugin.h"

namespace qvn::test {

class __attribute__((visibility("default"))) FakeTransport {
 public:
  static constexpr char kName[] = "FAKE";

  static FakeTransport& instance();
  // Forgets what it was told to do and what was asked of it.
  void reset();
  // The module's file, and that put under its name into the registry as a network transport.
  static const char* module();
  static void registerModule();
  // A device of this transport: of a family, or a Cpd printer.
  static std::string deviceText(const std::string& family, std::uint32_t handle,
                                const std::string& portName = "PORT");
  static std::string printerText(std::uint32_t handle, const std::string& portName = "PORT");

  // What the devices do. Unset: opens and visitors give 0, writes take everything, exchanges get no reply and
  // the request's code 1460.
  std::function<std::uint32_t(const std::string& connection)> onOpen;
  std::function<void(Data& data)> onWrite;
  std::function<std::optional<Data>(const Data& request)> onExchange;
  std::function<std::uint32_t(const std::string& visitor, Data* data)> onVisitor;
  // An exchange to which there is no reply lasts until it is cancelled.
  std::atomic<bool> awaitsReplies{false};
  // The devices that a discovery reports.
  std::function<std::vector<std::string>(const std::string& options)> onDiscover;
  // Every call that reaches the transport comes by here, by its name ("open", "visit"): what this throws the
  // call throws, and a code other than 0 is how it fails, where it has a way to. A call that gives something
  // back has done so all the same.
  std::function<std::uint32_t(const char* call)> onCall;
  // Gets all that is recorded, on the thread that asks.
  std::function<void(const std::string& call)> onRecord;

  // What the library asked, in order: "get bidi", "open bidi", "npa print 0500", "esc bidi 1B53560000000000",
  // "visit startJobPrinter print", "write 5 68656C6C6F" (a longer one without its bytes), "close print",
  // "release print", "discover".
  void record(const std::string& call);
  std::vector<std::string> calls() const;
  std::vector<std::string> takeCalls();
  // The same with what the library leaves on the transport's objects in between: " tag bidi 1",
  // " child bidi 0 7" (the handle of the device, or "none"), " release visitor npaDataVisitor".
  std::vector<std::string> takeTrail();
  // The calls that begin so.
  std::vector<std::string> calls(const std::string& prefix) const;
  // All bytes that were written.
  std::string written() const;
  // What the library has of the transport and has not given back: empty when it has nothing.
  std::string held() const;

  // Delivers data to the device of the handle, or to that of the latest visitor or opened connection, on the
  // caller's thread. Gives the result code that the device left in the data.
  std::uint32_t deliver(Data data, std::uint32_t handle = 0);
  void deliver(Notification notification, std::uint32_t handle = 0);
  void loseConnection(std::uint32_t handle = 0);
  // The handle of the device that this thread writes to or whose visitor it runs.
  static std::uint32_t visited();

  struct Connection;
  struct Visit;
  class Connections;
  class Visitors;
  class Discovery;

  // What the module's entry points answer.
  std::uint32_t run(const char* entryPoint);
  ConnectionManager* connectionManager();
  VisitorManager* visitorManager();
  Discoverer* discoverer();

 private:
  FakeTransport();
  DeviceReference device(std::uint32_t handle) const;
  void setDevice(std::uint32_t handle, Device* device);
  std::uint32_t reached(const char* call) { return onCall ? onCall(call) : QRN_ERROR_SUCCESS; }

  mutable std::mutex mutex_;
  std::vector<std::string> calls_;
  std::string written_;
  // By handle; at 0 the latest.
  std::map<std::uint32_t, DeviceReference> devices_;
  std::atomic<int> visitorsOut_{0};
  std::unique_ptr<Connections> connections_;
  std::unique_ptr<Visitors> visitors_;
  std::unique_ptr<Discovery> discovery_;
};

}  // namespace qvn::test
