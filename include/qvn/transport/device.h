// Device: a printer, scanner or HID device as a transport sees it. The library makes devices; a transport
// only gets references to them and delivers what they send.
#pragma once

#include <cstdint>
#include <string>

#include "qvn/transport/connectable.h"
#include "qvn/transport/data.h"
#include "qvn/transport/notification.h"
#include "qvn/transport/subject.h"
#include "qvn/transport/visitor.h"

namespace qvn {

// A transport calls accept (the device hands itself to a visitor), getHandle, getAttributes, and delivers
// what the device sends: what a printer sends by notify(Data&), what a scanner or a HID sends by doAccept.
// Both run on the calling thread; the data stays the transport's. The reference given through a visitor ends
// with that visitor's release, that in a child slot with the connection's last close: a transport whose
// threads deliver later keeps a DeviceReference.
//
// The order of the virtual operations is part of the interface between the library and its plug-ins.
class Device : public Connectable, public Subject {
 public:
  Device() = default;
  ~Device() override;

  // The handle in the attribute text, 0 when it has none.
  virtual std::uint32_t getHandle();

  // A copy of the attribute text.
  virtual std::string getAttributes();

 protected:
  virtual std::uint32_t doSetByteArray(const std::string& descriptor, const std::uint8_t* bytes,
                                       std::uint32_t length);
  virtual std::uint32_t doSetLong(const std::string& descriptor, std::uint32_t value);
  virtual std::uint32_t doSetString(const std::string& descriptor, const std::string& value);

 public:
  // Replaces the whole attribute text.
  virtual void setAttributes(const std::string& attributes);

 protected:
  virtual void doPersist();
  virtual void doUpdate();

 public:
  // Hands the device itself to the visitor.
  void accept(Visitor& visitor) override;

  // Change an attribute named by its descriptor: 87 when the descriptor's Access is not "Writeable", else
  // what the device's kind answers (1359 for kinds that allow no change).
  std::uint32_t setByteArray(const std::string& descriptor, const std::uint8_t* bytes, std::uint32_t length);
  std::uint32_t setLong(const std::string& descriptor, std::uint32_t value);
  std::uint32_t setString(const std::string& descriptor, const std::string& value);

  void persist() { doPersist(); }
  void update() { doUpdate(); }

  bool isBidiAllowed() const { return bidiAllowed_; }

  // An event of a HID: the transport fills in category and id. 0 or, for a device without events, 1.
  virtual std::uint32_t doAccept(Notification& notification);
  // One thing that the device sent, whole: an ESC command of a Cpd scanner, a data block or XML document of a
  // Bpd scanner (empty, with a code, for a read that failed), or a report of a HID. Ends when the
  // clients' callbacks have returned; the next one is delivered only then. The data's result code is 1 when
  // nobody wants it now. Here: the observers are notified.
  virtual void doAccept(Data& data);
  // The connection to the device ended without being closed. 0, or 1 when it makes no difference now.
  virtual std::uint32_t doOnConnectionLost();

 protected:
  std::atomic<bool> bidiAllowed_{false};

 private:
  std::atomic<std::uint32_t> cachedHandle_{0};
  std::string attributes_;
};

// A device that may be gone: how a transport keeps the one that its threads deliver to. Copies are references
// to the same device; any thread may use them.
class DeviceReference : private SubjectReference {
 public:
  // To nothing.
  DeviceReference() = default;
  explicit DeviceReference(Device& device) : SubjectReference(device) {}

  // Device's operations of these names, if the device is still there; it then stays until the call is over.
  // False when it is gone. Nothing that is thrown gets out; the data's result code is 1359 then.
  bool accept(Data& data) const;
  bool accept(Notification& notification) const;
  bool onConnectionLost() const;
};

}  // namespace qvn
