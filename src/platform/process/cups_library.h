// The functions of libcups that this layer calls, loaded when they are first needed: a machine without CUPS
// needs no libcups either.
#pragma once

#include <cups/cups.h>

#include <memory>

#include "platform/process/module.h"

namespace qvn::platform {

class CupsLibrary {
 public:
  // The library, which stays loaded for good; null while it cannot be loaded or lacks a function.
  static const CupsLibrary* get();

  decltype(&::cupsServer) cupsServer = nullptr;
  decltype(&::ippPort) ippPort = nullptr;
  decltype(&::cupsEncryption) cupsEncryption = nullptr;
  decltype(&::cupsSetPasswordCB2) cupsSetPasswordCB2 = nullptr;
  decltype(&::httpConnect2) httpConnect2 = nullptr;
  decltype(&::httpSetTimeout) httpSetTimeout = nullptr;
  decltype(&::httpClose) httpClose = nullptr;
  decltype(&::cupsDoRequest) cupsDoRequest = nullptr;
  decltype(&::ippNewRequest) ippNewRequest = nullptr;
  decltype(&::ippAddInteger) ippAddInteger = nullptr;
  decltype(&::ippAddStrings) ippAddStrings = nullptr;
  decltype(&::ippGetStatusCode) ippGetStatusCode = nullptr;
  decltype(&::ippFirstAttribute) ippFirstAttribute = nullptr;
  decltype(&::ippNextAttribute) ippNextAttribute = nullptr;
  decltype(&::ippGetGroupTag) ippGetGroupTag = nullptr;
  decltype(&::ippGetName) ippGetName = nullptr;
  decltype(&::ippGetString) ippGetString = nullptr;
  decltype(&::ippDelete) ippDelete = nullptr;

 private:
  bool load();
  template <typename Function>
  bool find(const char* symbol, Function& function) const;

  std::unique_ptr<Module> module_;
};

}  // namespace qvn::platform
