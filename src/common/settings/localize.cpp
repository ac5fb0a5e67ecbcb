#include "common/settings/localize.h"

#include <algorithm>
#include <memory>
#include <mutex>

#include "common/exception.h"
#include "common/settings/brand_table.h"
#include "common/settings/registry_key.h"
#include "common/text.h"
#include "platform/base/error.h"
#include "platform/process/module.h"

namespace qvn {
namespace {

constexpr std::size_t kLocalIdLength = 4;
constexpr std::size_t kMaxModelNameLength = 255;
const std::string kScratchRoot = "Software\\QuorinTemp\\temp";

std::mutex instanceMutex;
std::atomic<Localize*> instance{nullptr};

}  // namespace

const BrandEntry* findBrand(std::string_view prefix) {
  const auto found = std::find_if(kBrandTable.begin(), kBrandTable.end(), [&](const BrandEntry& entry) {
    return equalsIgnoringCase(entry.prefix, prefix);
  });
  return found == kBrandTable.end() ? nullptr : &*found;
}

void Localize::createInstance(const void* moduleAddress) {
  std::lock_guard<std::mutex> lock(instanceMutex);
  if (instance.load() == nullptr) instance = new Localize(moduleAddress);
}

Localize& Localize::getInstance() {
  Localize* localize = instance.load(std::memory_order_acquire);
  if (localize == nullptr) throw "You must call Localize::createInstance() before calling getInstance()";
  return *localize;
}

void Localize::destroyInstance() {
  std::lock_guard<std::mutex> lock(instanceMutex);
  delete instance.exchange(nullptr);
}

Localize::Localize(const void* moduleAddress) : modulePath_(platform::modulePath(moduleAddress)) {
  const std::size_t separator = modulePath_.find_last_of("\\/");
  const std::string fileName =
      separator == std::string::npos ? modulePath_ : modulePath_.substr(separator + 1);
  localId_ = toLower(fileName.substr(0, kLocalIdLength));
  rootPath_ = getBrandRoot() + "\\Qvn\\";
  localRoot_ = rootPath_ + "Local\\" + localId_ + "\\";
  sharedRoot_ = rootPath_ + "Shared\\";
}

std::string Localize::getBrandRoot() const {
  const BrandEntry* brand = findBrand(brandPrefix());
  return std::string("Software\\") + (brand != nullptr ? brand->folder : kDefaultBrandFolder);
}

const std::string& Localize::getRegistryRoot(std::uint32_t selection) const {
  switch (selection) {
    case 0:
      return localRoot_;
    case 1:
      return sharedRoot_;
    default:
      return kScratchRoot;
  }
}

std::uint32_t Localize::getDefaultModelId() {
  if (defaultModelId_ == 0) {
    try {
      std::uint32_t stored = 0;
      RegistryKey runtime(localRoot_ + "Runtime", false, RegistryKey::kLocalMachine);
      if (runtime.getValue("DefaultModelId", stored)) defaultModelId_ = stored;
    } catch (const Win32Exception&) {
      // Not set up on this machine: no queue has the default model.
    }
  }
  return defaultModelId_;
}

std::string Localize::getDefaultModelName() const {
  RegistryKey runtime(localRoot_ + "Runtime", false, RegistryKey::kLocalMachine);
  std::string name;
  if (!runtime.getValue("DefaultModelName", name)) {
    throw Win32Exception("Localize::getDefaultModelName()", platform::kFileNotFound, "Localize", __LINE__);
  }
  if (name.size() > kMaxModelNameLength) {
    throw Win32Exception("Localize::getDefaultModelName()", platform::kMoreData, "Localize", __LINE__);
  }
  return name;
}

bool Localize::isFamilyEntry() const {
  return std::any_of(kBrandTable.begin(), kBrandTable.end(), [&](const BrandEntry& entry) {
    return equalsIgnoringCase(entry.prefix, brandPrefix()) && entry.isFamily != 0;
  });
}

}  // namespace qvn
