#include "esc/scanner.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/little_endian.h"

namespace sim {
namespace {

using esc::Command;
using esc::Status;

constexpr std::uint32_t kFaxMemory = std::uint32_t{1} << 20;

constexpr std::array kFormatNames = {"bw", "gray", "color"};
constexpr std::array kOriginNames = {"flatbed", "feeder"};

template <typename Enumerator, typename Names>
const char* nameOf(Enumerator value, const Names& names) {
  return names[static_cast<std::size_t>(value)];
}

}  // namespace

Scanner::Scanner(std::string model, ScanEngine& engine, const FaultSwitches& faults)
    : model_(std::move(model)), engine_(engine), faults_(faults) {}

std::optional<Bytes> Scanner::answer(ConnectionId host, Command command, ByteView bytes) {
  ScanSettings& settings = hosts_[host];
  switch (command) {
    case Command::Version:
      return esc::makeReply(esc::kVersionReply, versionText());
    case Command::Resolution:
    case Command::ColorFormat:
    case Command::Clipping:
    case Command::Size:
    case Command::SetParameters:
      return esc::makeStatus(set(settings, command, bytes));
    case Command::FeederStatus:
      return esc::makeStatus(Status::Good, sheetCount());
    case Command::ScanLock:
      return esc::makeStatus(engine_.lock(host) ? Status::Good : Status::Busy);
    case Command::ScanUnlock:
      engine_.unlock(host);
      return esc::makeStatus(Status::Good);
    case Command::CopyLock:
      if (faults_.busy() || (copyLockedBy_ && copyLockedBy_ != host)) return esc::makeStatus(Status::Busy);
      copyLockedBy_ = host;
      return esc::makeStatus(Status::Good);
    case Command::CopyUnlock:
      if (copyLockedBy_ == host) copyLockedBy_.reset();
      return esc::makeStatus(Status::Good);
    case Command::Filter:
    case Command::Processing:
    case Command::Raw:
    case Command::Exposure:
    case Command::Offset:
    case Command::Smart:
    case Command::PaperSize:
      return esc::makeStatus(Status::Good);
    case Command::GetParameters:
      return esc::makeReply(esc::kParametersReply, parametersText(settings));
    case Command::CopyParameters:
      return esc::makeReply(esc::kCopyData, "copies=1\npaper=A4\n");
    case Command::NetworkScan:
      return Bytes{esc::kEscape, 'F', 'h', 'r', 0, 0, 0, 0};
    case Command::FaxSpace: {
      Bytes free;
      appendLittle32(free, kFaxMemory - static_cast<std::uint32_t>(faxData_.size()));
      return esc::makeReply(esc::kFaxSpaceReply, free);
    }
    case Command::FaxAbort:
      return esc::makeReply(esc::kFaxAbortReply);
    case Command::FaxGet:
      return esc::makeReply(esc::kFaxGetReply, faxData_);
    case Command::FaxSend: {
      const ByteView data = bytes.subspan(esc::kHeaderLength);
      faxData_.assign(data.begin(), data.end());
      return esc::makeReply(esc::kFaxSendReply);
    }
    case Command::FaxStatus:
      return esc::makeReply(esc::kFaxStatusReply, Bytes(2));
    case Command::HostNames:
      return esc::makeHeader(bytes.first(4));
    case Command::ScanStatus: {
      Bytes reply = esc::makeHeader(bytes.first(4));
      reply[esc::kStateAt] = engine_.isSending() ? 1 : 0;
      return reply;
    }
    case Command::Other:
      if ((bytes[esc::kWantsReplyAt] & 0x80) == 0) return std::nullopt;
      return esc::makeHeader(bytes.first(4));
    case Command::Go:
    case Command::Abort:
      break;
  }
  return std::nullopt;
}

Status Scanner::beginPage(ConnectionId host) {
  switch (engine_.beginPage(host, hosts_[host])) {
    case ScanEngine::Start::Good:
      return Status::Good;
    case ScanEngine::Start::Busy:
      return Status::Busy;
    case ScanEngine::Start::Impossible:
      return Status::BadParameter;
    case ScanEngine::Start::FeederEmpty:
      break;
  }
  return Status::FeederEmpty;
}

Bytes Scanner::endOfPageStatus() const { return esc::makeStatus(Status::Good, sheetCount()); }

void Scanner::connectionClosed(ConnectionId host) {
  hosts_.erase(host);
  if (copyLockedBy_ == host) copyLockedBy_.reset();
  engine_.connectionClosed(host);
}

void Scanner::reset() {
  copyLockedBy_.reset();
  engine_.reset();
}

Status Scanner::set(ScanSettings& settings, Command command, ByteView bytes) const {
  const std::uint16_t first = readLittle16(bytes, esc::kParameter);
  const std::uint16_t second = readLittle16(bytes, esc::kSecondParameter);
  switch (command) {
    case Command::Resolution:
      if (first != second ||
          std::find(kResolutions.begin(), kResolutions.end(), first) == kResolutions.end()) {
        return Status::BadParameter;
      }
      settings.dpi = first;
      return Status::Good;
    case Command::ColorFormat:
      if (bytes[esc::kParameter] >= kFormatNames.size()) return Status::BadParameter;
      settings.format = static_cast<ColorFormat>(bytes[esc::kParameter]);
      return Status::Good;
    case Command::Clipping:
      if (first >= kGlassWidth || second >= kGlassHeight) return Status::BadParameter;
      settings.left = first;
      settings.top = second;
      return Status::Good;
    case Command::Size:
      if (first == 0 || first > kGlassWidth || second == 0 || second > kGlassHeight) {
        return Status::BadParameter;
      }
      settings.width = first;
      settings.height = second;
      return Status::Good;
    default: {
      const ByteView text = bytes.subspan(esc::kHeaderLength);
      return setParameters(settings, std::string(text.begin(), text.end()));
    }
  }
}

Status Scanner::setParameters(ScanSettings& settings, std::string_view text) const {
  PageOrigin origin = settings.origin;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line == "source=flatbed") {
      origin = PageOrigin::Flatbed;
    } else if (line == "source=feeder") {
      origin = PageOrigin::Feeder;
    } else {
      return Status::BadParameter;
    }
  }
  settings.origin = origin;
  return Status::Good;
}

std::string Scanner::versionText() const {
  std::string resolutions;
  for (const std::uint16_t dpi : kResolutions)
    resolutions += (resolutions.empty() ? "" : ",") + std::to_string(dpi);
  return "model=" + model_ + "\ndpi=" + resolutions +
         "\nmodes=bw,gray,color\nwidth=" + std::to_string(kGlassWidth) +
         "\nheight=" + std::to_string(kGlassHeight) + "\nfeeder=1\n";
}

std::string Scanner::parametersText(const ScanSettings& settings) const {
  return std::string("source=") + nameOf(settings.origin, kOriginNames) +
         "\ndpi=" + std::to_string(settings.dpi) + "\nmode=" + nameOf(settings.format, kFormatNames) +
         "\nleft=" + std::to_string(settings.left) + "\ntop=" + std::to_string(settings.top) +
         "\nwidth=" + std::to_string(settings.width) + "\nheight=" + std::to_string(settings.height) +
         "\nsheets=" + std::to_string(engine_.sheets()) + "\n";
}

std::uint8_t Scanner::sheetCount() const {
  return static_cast<std::uint8_t>(std::min<std::uint32_t>(engine_.sheets(), 255));
}

}  // namespace sim
