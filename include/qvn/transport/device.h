// Device: a printer, scanner or HID device as a transport sees it. The library makes devices; a transport
// only gets references to them and delivers what they send.
#pragma once

#include <cstdint>
#include <string>

#include "qvn/transport/connectable.h"
#include "qvn/transport/subject.h"

namespace qvn {

// A transport calls accept (the device hands itself to a visitor), getHandle, getAttributes and
// notify(Data&). A notification runs the observers on the calling thread; the data stays the transport's. The
// reference given through a visitor ends with that visitor's release: a transport whose threads deliver
// later, alerts for example, keeps a SubjectReference.
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

 protected:
  std::atomic<bool> bidiAllowed_{false};

 private:
  std::uint32_t cachedHandle_ = 0;
  std::string attributes_;
};

}  // namespace qvn
