#include "shared/channel/channel_watch.h"

#include <sys/epoll.h>

#include <array>
#include <cerrno>

#include "platform/base/error.h"
#include "qvn/result_codes.h"

namespace qvn::shared {

std::uint32_t ChannelWatch::open(Channel& channel) {
  channel_ = &channel;
  set_ = platform::UniqueDescriptor(epoll_create1(EPOLL_CLOEXEC));
  if (!set_) return platform::errorFromErrno(errno);
  if (const std::uint32_t rc = called_.open(); rc != QRN_ERROR_SUCCESS) return rc;
  for (const int fd : {channel_->readable(), called_.fd()}) {
    epoll_event event{.events = EPOLLIN, .data = {.fd = fd}};
    if (epoll_ctl(set_.get(), EPOLL_CTL_ADD, fd, &event) != 0) return platform::errorFromErrno(errno);
  }
  return QRN_ERROR_SUCCESS;
}

void ChannelWatch::wait(int timeout) {
  std::array<epoll_event, 2> events;
  const int count = epoll_wait(set_.get(), events.data(), events.size(), timeout);
  for (int i = 0; i < count; ++i) {
    if (events[static_cast<std::size_t>(i)].data.fd == called_.fd()) called_.take();
  }
}

void ChannelWatch::pause() {
  if (!channel_->keepQuiet(true)) watchFor(0);
}

void ChannelWatch::resume() {
  if (!channel_->keepQuiet(false)) watchFor(EPOLLIN);
}

void ChannelWatch::watchFor(std::uint32_t events) {
  epoll_event event{.events = events, .data = {.fd = channel_->readable()}};
  epoll_ctl(set_.get(), EPOLL_CTL_MOD, channel_->readable(), &event);
}

}  // namespace qvn::shared
