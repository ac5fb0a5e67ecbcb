#include "documents/object_port.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "documents/bpd_blocks.h"
#include "documents/document_writer.h"
#include "documents/element.h"
#include "documents/method_document.h"
#include "documents/refusal.h"
#include "page/page_sender.h"
#include "page/page_stream.h"

namespace sim {
namespace {

constexpr std::string_view kTraceName = "scan";

// The id of a reply when that of the request cannot be read.
constexpr char kNoId[] = "0";

constexpr std::size_t kMisframeBy = 256;
constexpr std::uint32_t kReadErrorCode = 1117;  // an I/O error

std::string_view textOf(ByteView bytes) {
  return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

// An id that no request has.
std::string otherIdThan(std::string_view id) {
  std::int64_t number = 0;
  std::from_chars(id.data(), id.data() + id.size(), number);
  return std::to_string((number & 0x7FFFFFFF) ^ 0x40000000);
}

const documents::Entry& entryOf(const MethodCall& call) {
  const std::string_view name = call.kind == MethodCall::Kind::AddObserver      ? "addObserver"
                                : call.kind == MethodCall::Kind::RemoveObserver ? "removeObserver"
                                                                                : std::string_view(call.name);
  const documents::Entry* const entry = documents::entryNamed(name);
  return entry == nullptr || entry->isNotification ? documents::kUnknown : *entry;
}

}  // namespace

ObjectPort::ObjectPort(EventLoop& loop, FaultSwitches& faults, ScanEngine& engine, PageSource& pages,
                       Trace& trace, bool framesReplies)
    : loop_(loop),
      faults_(faults),
      engine_(engine),
      pages_(pages),
      trace_(trace),
      framesReplies_(framesReplies),
      objects_(engine, faults,
               {.notify = [this](ConnectionId id, const Notification& of) { notify(id, of); },
                .mark = [this](ConnectionId id, std::string_view tag) { mark(id, tag); },
                .beginPage = [this](ConnectionId id, const ScanSettings& of) { beginPage(id, of); },
                .cutPage = [this](ConnectionId id) { return cutPage(id); }}),
      hosts_(loop, {.onMessage = [this](ConnectionId id, const Bytes& block) { handle(id, block); },
                    .onClosing = [this](ConnectionId id) { closing(id); }}),
      pump_(loop, hosts_,
            {.onPageOver = [this](ConnectionId id) { endPage(id); },
             .onStatusDue = nullptr,
             .onReadError =
                 [this](ConnectionId id) {
                   queue(id, bpd::makeReadError(kReadErrorCode),
                         "read error " + std::to_string(kReadErrorCode));
                 }}) {}

void ObjectPort::sendToAll(ByteView payload) {
  for (const auto& [id, host] : hosts_.all()) {
    queueInTurn(id, bpd::makeBlock(payload), std::string(textOf(payload)));
  }
}

void ObjectPort::handle(ConnectionId id, const Bytes& block) {
  if (!bpd::isHeader(block)) {
    hosts_.close(id);
    return;
  }
  const ByteView payload = ByteView(block).subspan(bpd::kHeaderLength);
  trace_.receivedText(id, textOf(payload), kTraceName);
  std::string requestId = kNoId;
  const documents::Entry* kind = &documents::kUnknown;
  try {
    const MethodDocument document(payload);
    requestId = document.requestId();
    const MethodCall call = document.call();
    kind = &entryOf(call);
    if (faults_.strike(ReplyFault::Close, *kind)) {
      hosts_.close(id);
      return;
    }
    if (faults_.strike(ReplyFault::Reject, *kind)) throw Refusal("rejected");
    if (faults_.strike(ReplyFault::WrongId, *kind)) requestId = otherIdThan(requestId);
    objects_.carryOut(id, call,
                      [&](const Element& result) { reply(id, *kind, responseDocument(requestId, result)); });
  } catch (const Refusal& refusal) {
    reply(id, *kind, exceptionDocument(requestId, refusal.what()));
  }
}

void ObjectPort::reply(ConnectionId id, const documents::Entry& kind, std::string document) {
  spoil(document, kind);
  if (framesReplies_) {
    const std::size_t excess = faults_.strike(ReplyFault::Misframe, kind) ? kMisframeBy : 0;
    send(id, kind, document, bpd::makeBlock(bpd::makeReplyFrame(framed_++, document, excess)));
  } else {
    send(id, kind, document, bpd::makeBlock(document));
  }
}

void ObjectPort::notify(ConnectionId id, const Notification& notification) {
  const documents::Entry& kind = *documents::entryNamed(notification.event);
  std::string document = notificationDocument(notification);
  spoil(document, kind);
  send(id, kind, document, bpd::makeBlock(document));
}

void ObjectPort::spoil(std::string& document, const documents::Entry& kind) {
  if (faults_.strike(ReplyFault::Corrupt, kind)) document.insert(document.rfind("</"), "<unclosed>");
  if (faults_.strike(ReplyFault::Oversize, kind)) {
    document.resize(std::max(document.size(), documents::kLongest + 1), '\n');
  }
}

void ObjectPort::send(ConnectionId id, const documents::Entry& kind, const std::string& document,
                      const Bytes& block) {
  if (faults_.strike(ReplyFault::Drop, kind)) return;
  if (const auto delay = faults_.strike(ReplyFault::Delay, kind)) pump_.delayReplies(id, *delay);
  const int times = faults_.strike(ReplyFault::Double, kind) ? 2 : 1;
  const auto late = faults_.strike(ReplyFault::Late, kind);
  for (int i = 0; i < times; ++i) {
    if (late) {
      loop_.after(*late, [this, id, document, block] { queue(id, block, document); });
    } else {
      queueInTurn(id, block, document);
    }
  }
}

void ObjectPort::mark(ConnectionId id, std::string_view tag) {
  const std::string text = "<" + std::string(tag) + ">";
  queueInTurn(id, bpd::makeBlock(text), text);
}

void ObjectPort::beginPage(ConnectionId id, const ScanSettings& settings) {
  loop_.atOrNow(hosts_.at(id).earliestReply, [this, id, settings, number = engine_.pageNumber()] {
    if (!engine_.isSendingTo(id) || engine_.pageNumber() != number) return;
    const BlockFormat format{bpd::kScanDataHeaderLength,
                             [](std::uint8_t* to, std::size_t promised, std::uint64_t) {
                               bpd::writeScanDataHeader(to, promised);
                             }};
    hosts_.at(id).page.emplace(pages_.open(number, settings, format, [this, id](ByteView) {
      trace_.sentText(id, bpd::kScanDataTag, kTraceName);
    }));
    pump_.wake(id);
  });
}

bool ObjectPort::cutPage(ConnectionId id) {
  std::optional<PageSender>& page = hosts_.at(id).page;
  if (!page) return false;
  page->abort();
  pump_.wake(id);
  return true;
}

void ObjectPort::endPage(ConnectionId id) {
  std::optional<PageSender>& page = hosts_.at(id).page;
  const bool wasCut = page->isAborted();
  pages_.close(*page);
  page.reset();
  objects_.pageOver(id, wasCut);
}

void ObjectPort::closing(ConnectionId id) {
  if (hosts_.at(id).page) pages_.discard();
  objects_.connectionClosed(id);
}

void ObjectPort::queueInTurn(ConnectionId id, const Bytes& block, const std::string& trace) {
  loop_.atOrNow(hosts_.at(id).earliestReply, [this, id, block, trace] { queue(id, block, trace); });
}

void ObjectPort::queue(ConnectionId id, ByteView block, std::string_view trace) {
  if (!pump_.queue(id, block)) return;
  trace_.sentText(id, trace, kTraceName);
  // Not at once: the host must not be lost while an object still has something to tell it.
  pump_.wake(id);
}

}  // namespace sim
