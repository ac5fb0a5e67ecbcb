#include "shared/scan/connection.h"

#include <map>
#include <mutex>
#include <utility>

#include "qvn/qvn.h"
#include "qvn/result_codes.h"
#include "shared/scan/error.h"

namespace qvn::scan {

namespace {

// By the client that scans: the library's callback has no other argument to find them.
class Receivers {
 public:
  void add(std::uint32_t client, std::shared_ptr<Receiver> receiver) {
    const std::lock_guard<std::mutex> lock(mutex_);
    receivers_[client] = std::move(receiver);
  }
  void remove(std::uint32_t client) {
    const std::lock_guard<std::mutex> lock(mutex_);
    receivers_.erase(client);
  }
  std::shared_ptr<Receiver> find(std::uint32_t client) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = receivers_.find(client);
    return found == receivers_.end() ? nullptr : found->second;
  }

 private:
  std::mutex mutex_;
  std::map<std::uint32_t, std::shared_ptr<Receiver>> receivers_;
};

Receivers receivers;

std::uint32_t onScanData(std::uint32_t client, std::uint32_t, std::uint32_t, std::uint32_t kind,
                         const std::uint8_t* data, std::uint32_t length) {
  if (const auto receiver = receivers.find(client)) receiver->receive(kind, {data, length});
  return 0;
}

}  // namespace

Connection::Connection(std::uint32_t handle) : handle_(handle) {
  QvnGetClientId(&client_);
  requireSuccess(QvnOpenScanner(client_, handle_), "cannot open the scanner");
  QvnRegisterForAsyncDataScanner(client_, handle_, kScanData | kAlert | kDetail, onScanData);
}

Connection::~Connection() {
  QvnUnregisterForAsyncDataScanner(client_, handle_);
  QvnCloseScanner(client_, handle_);
}

void Connection::attach(std::shared_ptr<Receiver> receiver) { receivers.add(client_, std::move(receiver)); }

void Connection::detach() noexcept { receivers.remove(client_); }

void requireSuccess(std::uint32_t code, const std::string& sentence) {
  if (code == QRN_ERROR_SUCCESS) return;
  throw Error(code == QRN_ERROR_BUSY ? Problem::Busy : Problem::Failed, sentence, code);
}

}  // namespace qvn::scan
