// Connectable: what can be opened, closed and visited: the connections of a transport, and the devices.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "qvn/transport/critical_section.h"
#include "qvn/transport/visitor.h"

namespace qvn {

// The order of the virtual operations is part of the interface between the library and its plug-ins.
class Connectable {
 public:
  Connectable() = default;
  Connectable(const Connectable&) = delete;
  Connectable& operator=(const Connectable&) = delete;
  virtual ~Connectable();

  // Two slots for other objects, which are not owned. An index other than 0 or 1 gives null or false. A
  // scanner and a HID put themselves into slot 0 of a connection before they open it, and take themselves out
  // after closing it: a connection may take who is in slot 0 for the Device that gets what comes on it
  // unasked.
  virtual Connectable* getChild(std::uint32_t index);
  virtual bool setChild(std::uint32_t index, Connectable* child);

  virtual void reserved();

  // First visitor hook: runs the visitor on this object. A device instead hands itself to the visitor.
  virtual void accept(Visitor& visitor);
  // The same for the object in a child slot; nothing happens when the slot is empty.
  virtual void acceptChild(std::uint32_t index, Visitor& visitor);

  virtual void releaseChild0();
  virtual void releaseChild1();

  // Second visitor hook: sends the valid bytes to the device. The bytes that were sent are consumed and their
  // number is left in the data's count, also when only a part could be sent; the data's result code tells how
  // it went. Here: nothing is sent, code 1.
  virtual void write(Data& data);

  // The first open and the last close; 0 or why not.
  virtual std::uint32_t doOpen();
  virtual std::uint32_t doClose();

  virtual void setLabel(const std::string& label);
  virtual std::string getLabel() const;

  // On a connection: how many holders keep it beyond the operation that asked for it. A connection manager
  // must not destroy a connection whose tag is not 0. Any thread.
  virtual void setTag(std::uint32_t tag);
  virtual std::uint32_t getTag() const;

  // Counted open: only the first calls doOpen, and counts only when that succeeds. Callers serialise open and
  // close of one object.
  std::uint32_t open();
  // Counted close: only the last calls doClose. Without an open it does nothing.
  std::uint32_t close();

 protected:
  CriticalSection lock_;

 private:
  Connectable* children_[2] = {nullptr, nullptr};
  std::string label_;
  std::atomic<std::uint32_t> tag_{0};
  std::atomic<std::uint32_t> openCount_{0};
};

}  // namespace qvn
