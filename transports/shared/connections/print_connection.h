// The "print" connection: a raw stream to where the device takes print data.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>

#include "qvn/transport/data.h"
#include "shared/channel/channel.h"
#include "shared/connections/transport_connection.h"

namespace qvn::shared {

class PrintConnection : public TransportConnection {
 public:
  void setPlace(std::shared_ptr<const Place> place) override;

  std::uint32_t doOpen() override;
  std::uint32_t doClose() override;

  // Sends all of the data. What went out is consumed and counted, also when the rest did not: 1460 when the
  // device took nothing for the time-out (the rest may be written again), 64 when it is gone (the job is
  // lost), 1229 when it is not open. One thread at a time.
  void write(Data& data) override;

  // Has the device drop what it has not printed yet, where it can be told that: 0, or why it was not. Not
  // while a write runs.
  std::uint32_t flush();

 private:
  std::mutex placeMutex_;
  std::shared_ptr<const Place> place_;
  std::unique_ptr<Channel> channel_;
  std::uint32_t writeTimeout_ = 0;
};

}  // namespace qvn::shared
