// The scan port of a BpdPrinter: method documents in, replies, notifications and pages out, for several hosts
// at once; one has the host mode at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "base/bytes.h"
#include "base/connection_id.h"
#include "base/trace.h"
#include "documents/block_assembler.h"
#include "documents/device_objects.h"
#include "documents/document_writer.h"
#include "documents/documents.h"
#include "faults/fault_switches.h"
#include "net/event_loop.h"
#include "net/message_hosts.h"
#include "net/sockets.h"
#include "page/page_pump.h"
#include "page/page_source.h"
#include "page/scan_engine.h"
#include "page/scan_settings.h"

namespace sim {

class ObjectPort {
 public:
  // `framesReplies`: responses and exceptions come in a frame.
  ObjectPort(EventLoop& loop, FaultSwitches& faults, ScanEngine& engine, PageSource& pages, Trace& trace,
             bool framesReplies);

  // Until then nobody can connect by TCP.
  void listen(const std::string& address, std::uint16_t port) { hosts_.listen(address, port); }
  // Takes in a host that is connected otherwise.
  void connect(Descriptor socket) { hosts_.connect(std::move(socket)); }

  // 0 when it does not listen.
  std::uint16_t port() const { return hosts_.port(); }

  // Sends a block of any payload to every host.
  void sendToAll(ByteView payload);

 private:
  using Hosts = MessageHosts<BlockAssembler, PageOutput>;

  void handle(ConnectionId id, const Bytes& block);
  void reply(ConnectionId id, const documents::Entry& kind, std::string document);
  void notify(ConnectionId id, const Notification& notification);
  void mark(ConnectionId id, std::string_view tag);
  // The faults that are in a document, and those that concern when and how often it is sent.
  void spoil(std::string& document, const documents::Entry& kind);
  void send(ConnectionId id, const documents::Entry& kind, const std::string& document, const Bytes& block);

  void beginPage(ConnectionId id, const ScanSettings& settings);
  bool cutPage(ConnectionId id);
  void endPage(ConnectionId id);
  void closing(ConnectionId id);

  // Queues in its turn, behind what is delayed.
  void queueInTurn(ConnectionId id, const Bytes& block, const std::string& trace);
  void queue(ConnectionId id, ByteView block, std::string_view trace);

  EventLoop& loop_;
  FaultSwitches& faults_;
  ScanEngine& engine_;
  PageSource& pages_;
  Trace& trace_;
  const bool framesReplies_;
  std::size_t framed_ = 0;  // replies
  DeviceObjects objects_;
  Hosts hosts_;
  PagePump<Hosts> pump_;
};

}  // namespace sim
