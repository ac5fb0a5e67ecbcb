// Visitor: one named operation of a transport ("npaDataVisitor", "flushPrintBufferVisitor"), handed what it
// works on and then run by a connection.
#pragma once

#include <cstdint>

#include "qvn/result_codes.h"

namespace qvn {

class Connectable;
class Data;
class Device;

// The order of use: get it from the visitor manager, hand it the data and the device that the operation
// needs, let the connection run it (Connectable::accept), read the result, release it. What is handed over
// stays the caller's and is valid until the release. One thread uses a visitor at a time.
//
// The order of the virtual operations is part of the interface between the library and its plug-ins.
class Visitor {
 public:
  virtual ~Visitor() = default;

  // The request of the operation (a packet, an attribute text). Operations that read fill it in, and its
  // result code (Data::getRc) tells how the transfer went.
  virtual void setData(Data& data) { data_ = &data; }

  // The device whose observers get the replies.
  virtual void setDevice(Device& device) { device_ = &device; }

  // Performs the operation on a connection of the same transport; returns only after any reply has been
  // delivered to the device's observers. Called through Connectable::accept.
  virtual void visit(Connectable& connection) = 0;

  // Any thread, before or during the visit: it stops waiting for a reply and returns as soon as it can, with
  // result 1236 unless it is over already. Never waits itself. Here: does nothing, and whoever cancels waits
  // for the end of the visit.
  virtual void cancel() {}

  // 0 when the operation was carried out, else why not.
  virtual std::uint32_t getResult() const { return result_; }

 protected:
  Data* data_ = nullptr;
  Device* device_ = nullptr;
  std::uint32_t result_ = QRN_ERROR_SUCCESS;
};

}  // namespace qvn
