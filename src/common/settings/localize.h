// Localize: who this library is: its module, its local id, and where its part of the registry lies.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace qvn {

// Created once from the library's module and only read afterwards, from any thread.
class Localize {
 public:
  // `moduleAddress` is any address inside the library's module. Later calls change nothing.
  static void createInstance(const void* moduleAddress);
  // Throws a plain text when there is none yet.
  static Localize& getInstance();
  static void destroyInstance();

  // The first four characters of the module's file name in lower case.
  const std::string& getLocalId() const { return localId_; }
  const std::string& getModulePath() const { return modulePath_; }

  // "Software\" and the brand's folder.
  std::string getBrandRoot() const;
  // The brand root and "\Qvn\".
  const std::string& getRootPath() const { return rootPath_; }
  // The registry root of a selection: 0 the library's own branch, 1 the shared one, others a scratch path.
  const std::string& getRegistryRoot(std::uint32_t selection) const;

  // The model that queues of this installation have (vendor id * 65536 + product id); 0 when it is not set.
  // Read once.
  std::uint32_t getDefaultModelId();
  // Throws Win32Exception with the registry's code when it is not set.
  std::string getDefaultModelName() const;

  // True when some brand with the local id's prefix belongs to the family.
  bool isFamilyEntry() const;

 private:
  explicit Localize(const void* moduleAddress);

  std::string brandPrefix() const { return localId_.substr(0, 2); }

  std::string localId_;
  std::string modulePath_;
  std::atomic<std::uint32_t> defaultModelId_{0};
  std::string rootPath_;
  std::string localRoot_;
  std::string sharedRoot_;
};

}  // namespace qvn
