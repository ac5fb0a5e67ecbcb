#include "usb/out_pipe.h"

#include <utility>

namespace sim::usb {

OutPipe::OutPipe(PortLink& link, std::function<void()> onPortEnded, const OnDone& onDone)
    : Pipe(onDone), feed_(link), onPortEnded_(std::move(onPortEnded)) {}

void OutPipe::serve() {
  bool mayConnectAnew = true;
  const auto portEnded = [&] {
    feed_.discard();
    onPortEnded_();
    if (!std::exchange(mayConnectAnew, false)) halt();  // the port takes no host at all
  };
  if (!feed_.flush()) portEnded();
  while (hasWaiting()) {
    Transfer& transfer = current();
    const auto taken = feed_.take(ByteView(transfer.data).subspan(transfer.taken));
    if (!taken) {
      portEnded();
      continue;
    }
    transfer.taken += *taken;
    if (transfer.taken < transfer.length) return;
    finishCurrent(Status::Done);
  }
}

void OutPipe::discard() { feed_.discard(); }

}  // namespace sim::usb
