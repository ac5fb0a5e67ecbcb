#include "usb/usbip_server.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

namespace sim::usb {
namespace {

// What a host may have waiting in its transfers; more is refused.
constexpr std::size_t kMostTransfers = 1024;
constexpr std::size_t kMostTransferBytes = std::size_t{16} << 20;

// A host that has left so much unread does not read any more.
constexpr std::size_t kMostWaiting = std::size_t{32} << 20;

}  // namespace

UsbipServer::UsbipServer(EventLoop& loop, Device& device)
    : loop_(loop),
      device_(device),
      hosts_(loop, {.onMessage = [this](ConnectionId id, const Bytes& message) { handle(id, message); },
                    .onClosing = [this](ConnectionId id) { closing(id); }}) {
  device_.handle(
      {.onDone = [this](Transfer&& transfer) { ended(transfer); }, .onUnplugged = [this] { closeAll(); }});
}

void UsbipServer::handle(ConnectionId id, const Bytes& message) {
  if (!hosts_.at(id).assembler.hasImported) {
    if (const auto question = usbip::readQuestion(message)) {
      answer(id, *question);
      return;
    }
  } else if (const auto command = usbip::readCommand(message)) {
    if (command->code == usbip::CommandCode::Submit) {
      submit(id, *command);
    } else {
      unlink(id, *command);
    }
    return;
  }
  hosts_.close(id);
}

void UsbipServer::answer(ConnectionId id, const usbip::Question& question) {
  const Description* const device = device_.isPlugged() ? &device_.description() : nullptr;
  if (question.code == usbip::QuestionCode::Devices) {
    send(id, usbip::devicesAnswer(device));
  } else if (question.isForTheDevice && device != nullptr) {
    hosts_.at(id).assembler.hasImported = true;
    send(id, usbip::importAnswer(device));
  } else {
    send(id, usbip::importAnswer(nullptr));
  }
}

void UsbipServer::submit(ConnectionId id, const usbip::Command& command) {
  auto& host = hosts_.at(id);
  Transfer transfer;
  transfer.host = id;
  transfer.sequence = command.sequence;
  transfer.endpoint = command.endpoint;
  transfer.length = command.length;
  transfer.endsWithZeroPacket = (command.flags & usbip::kEndsWithZeroPacket) != 0;
  transfer.mustBeFull = (command.flags & usbip::kMustBeFull) != 0;
  transfer.setup = command.setup;
  if (command.length > usbip::kLongestTransfer || host.transfers >= kMostTransfers ||
      host.transferBytes + command.length > kMostTransferBytes) {
    transfer.status = Status::NoMemory;
    send(id, usbip::submitAnswer(transfer));
    return;
  }
  if (!transfer.isIn()) transfer.data.assign(command.data.begin(), command.data.end());
  ++host.transfers;
  host.transferBytes += transfer.length;
  device_.submit(std::move(transfer));
}

void UsbipServer::unlink(ConnectionId id, const usbip::Command& command) {
  const auto transfer = device_.cancel(id, command.unlinked);
  if (!transfer || transfer->transferred() > 0) {
    // The host learns what was transferred from the end of the transfer, which it has had or gets now.
    if (transfer) ended(*transfer);
    send(id, usbip::unlinkAnswer(command.sequence, Status::Done));
  } else {
    release(*transfer);
    send(id, usbip::unlinkAnswer(command.sequence, Status::Cancelled));
  }
}

void UsbipServer::ended(const Transfer& transfer) {
  release(transfer);
  send(transfer.host, usbip::submitAnswer(transfer));
}

void UsbipServer::release(const Transfer& transfer) {
  auto* const host = hosts_.find(transfer.host);
  if (host == nullptr) return;
  --host->transfers;
  host->transferBytes -= transfer.length;
}

void UsbipServer::closing(ConnectionId id) {
  device_.forget(id);
  const bool hasOthers = std::any_of(hosts_.all().begin(), hosts_.all().end(), [id](const auto& other) {
    return other.first != id && other.second.assembler.hasImported;
  });
  if (hosts_.at(id).assembler.hasImported && !hasOthers) device_.reset();
}

void UsbipServer::closeAll() {
  std::vector<ConnectionId> ids;
  for (const auto& [id, host] : hosts_.all()) {
    if (host.assembler.hasImported) ids.push_back(id);
  }
  for (const ConnectionId id : ids) hosts_.close(id);
}

void UsbipServer::send(ConnectionId id, ByteView bytes) {
  auto* const host = hosts_.find(id);
  if (host == nullptr) return;
  host->waiting.insert(host->waiting.end(), bytes.begin(), bytes.end());
  flush(id);
}

void UsbipServer::flush(ConnectionId id) {
  auto* const host = hosts_.find(id);
  if (host == nullptr) return;
  const int fd = host->socket.get();
  while (!host->waiting.empty()) {
    const ssize_t sent = ::send(fd, host->waiting.data(), host->waiting.size(), MSG_NOSIGNAL);
    if (sent < 0 && (errno == EAGAIN || errno == EINTR) && host->waiting.size() <= kMostWaiting) {
      loop_.watchWritable(fd, [this, id] { flush(id); });
      return;
    }
    if (sent < 0) {
      hosts_.close(id);
      return;
    }
    host->waiting.erase(host->waiting.begin(), host->waiting.begin() + sent);
  }
  loop_.unwatchWritable(fd);
}

}  // namespace sim::usb
