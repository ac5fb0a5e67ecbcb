// PersistenceStore: the devices that outlive their processes, as attribute texts in the registry.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "common/process_service.h"
#include "common/settings/application_settings.h"
#include "common/threads/mutex.h"

namespace qvn {

// One value per device, named after its handle in decimal, below the store's key. Every operation holds a
// mutex that all processes share for its whole duration, waiting for it without limit.
class PersistenceStore : public ProcessService<PersistenceStore> {
 public:
  // 0, or the registry's code.
  std::uint32_t write(const std::string& store, std::uint32_t handle, const std::string& text);
  // Replaces the text, empty when there is no readable one, by what `change` makes of it: nobody writes in
  // between.
  std::uint32_t update(const std::string& store, std::uint32_t handle,
                       const std::function<std::string(const std::string& stored)>& change);
  std::uint32_t remove(const std::string& store, std::uint32_t handle);
  // 0, or 1168 when there is no readable text.
  std::uint32_t read(const std::string& store, std::uint32_t handle, std::string& text);
  // The first text, in the order of writing, that carries the port name, compared without case: 0; 1796 when
  // none does; 1359 when a text before it cannot be read.
  std::uint32_t findByPortname(const std::string& store, const std::string& portName, std::string& text);
  // Every text that can be read, in the order of writing; always 0.
  std::uint32_t enumerate(const std::string& store, std::vector<std::string>& texts);
  // The same without a copy: `reader` is lent each text. It must not call the registry, and therefore not
  // log.
  void forEach(const std::string& store, const std::function<void(std::string_view)>& reader);

 private:
  friend class ProcessService<PersistenceStore>;
  PersistenceStore();
  ~PersistenceStore() = default;

  Mutex mutex_;
  // Made once: making it looks the library's root up.
  ApplicationSettings settings_;
};

}  // namespace qvn
