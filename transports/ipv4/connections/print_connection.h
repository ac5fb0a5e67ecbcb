// The "print" connection: a raw stream to the device's print port.
#pragma once

#include <cstdint>
#include <mutex>

#include "connections/ip_connection.h"
#include "net/tcp_socket.h"
#include "qvn/transport/data.h"

namespace qvn::ipv4 {

class PrintConnection : public IpConnection {
 public:
  void setEndpoint(const Endpoint& endpoint) override;

  std::uint32_t doOpen() override;
  std::uint32_t doClose() override;

  // Sends all of the data. What went out is consumed and counted, also when the rest did not: 1460 when the
  // device took nothing for the time-out (the rest may be written again), 64 when it ended the connection
  // (the job is lost), 1229 when it is not open. One thread at a time.
  void write(Data& data) override;

 private:
  std::mutex endpointMutex_;
  Endpoint endpoint_;
  TcpSocket socket_;
  std::uint32_t writeTimeout_ = 0;
};

}  // namespace qvn::ipv4
