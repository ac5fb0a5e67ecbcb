// What the three stores (printers, scanners, HIDs) have in common: each is a part of the PersistenceStore.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qvn/result_codes.h"

namespace qvn {

// Stores by `store` what a transport reported of a device; a failure stays in the log, since nobody is told.
void storeReported(const std::string& text, const std::function<std::uint32_t()>& store);

class DeviceStore {
 public:
  DeviceStore(const DeviceStore&) = delete;
  DeviceStore& operator=(const DeviceStore&) = delete;

  // Writes the text under the handle that it carries; a text without one gives the codec's code.
  std::uint32_t persist(const std::string& text);
  std::uint32_t read(std::uint32_t handle, std::string& text);
  std::uint32_t remove(std::uint32_t handle);
  std::uint32_t findByPortname(const std::string& portName, std::string& text);
  // Every text that can be read; always 0.
  std::uint32_t enumerate(std::vector<std::string>& texts);
  // The same without a copy: `reader` is lent each text. It must not call the registry, and therefore not
  // log.
  void forEach(const std::function<void(std::string_view)>& reader);

 protected:
  explicit DeviceStore(const char* name) : name_(name) {}
  ~DeviceStore() = default;

  // What the PersistenceStore knows it by.
  const char* name() const { return name_; }

  // Puts the object that `make` gives for the stored text into the table: 1168 nothing is stored, 6 there is
  // no object for it.
  template <typename Table, typename Make>
  std::uint32_t restoreInto(Table& table, std::uint32_t handle, Make&& make) {
    std::string text;
    const std::uint32_t rc = read(handle, text);
    if (rc != QRN_ERROR_SUCCESS) return rc;
    auto object = make(text);
    if (!object) return QRN_ERROR_INVALID_HANDLE;
    table.add(handle, std::move(object));
    return QRN_ERROR_SUCCESS;
  }

 private:
  const char* name_;
};

}  // namespace qvn
