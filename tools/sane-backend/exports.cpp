// The functions of a SANE backend, under the names of the standard and those that SANE's loader looks for.
#include <sane/sane.h>

#include <memory>
#include <new>

#include "device_listing.h"
#include "open_scanner.h"
#include "options.h"
#include "qvn/result_codes.h"
#include "shared/client/failure.h"
#include "shared/client/session.h"
#include "shared/scan/error.h"

#define QVN_SANE_EXPORT extern "C" __attribute__((visibility("default")))
// The same function under its other name.
#define QVN_SANE_ALIAS(name) __attribute__((visibility("default"), alias(name)))

namespace {

using qvn::sane::DeviceListing;
using qvn::sane::OpenScanner;

constexpr SANE_Int kBuild = 1;

// What sane_init makes and sane_exit takes down; a program that ends without sane_exit leaves it to the
// system.
struct Backend {
  qvn::cli::Session session;
  std::unique_ptr<DeviceListing> listing;
};
Backend* backend = nullptr;

OpenScanner* scannerOf(SANE_Handle handle) { return static_cast<OpenScanner*>(handle); }

SANE_Status statusOf(const qvn::scan::Error& error) {
  switch (error.problem()) {
    case qvn::scan::Problem::Busy:
      return SANE_STATUS_DEVICE_BUSY;
    case qvn::scan::Problem::NoSheet:
      return SANE_STATUS_NO_DOCS;
    case qvn::scan::Problem::Refused:
      return SANE_STATUS_INVAL;
    case qvn::scan::Problem::Aborted:
    case qvn::scan::Problem::Cancelled:
      return SANE_STATUS_CANCELLED;
    case qvn::scan::Problem::ConnectionLost:
    case qvn::scan::Problem::Silent:
    case qvn::scan::Problem::BadAnswer:
    case qvn::scan::Problem::Failed:
      break;
  }
  return SANE_STATUS_IO_ERROR;
}

SANE_Status statusOf(const qvn::cli::Failure& failure) {
  return failure.code() == QRN_ERROR_ACCESS_DENIED ? SANE_STATUS_ACCESS_DENIED : SANE_STATUS_IO_ERROR;
}

// No exception reaches the program.
template <typename Operation>
SANE_Status guarded(const Operation& operation) noexcept {
  try {
    return operation();
  } catch (const qvn::scan::Error& error) {
    return statusOf(error);
  } catch (const qvn::cli::Failure& failure) {
    return statusOf(failure);
  } catch (const std::bad_alloc&) {
    return SANE_STATUS_NO_MEM;
  } catch (...) {
    return SANE_STATUS_IO_ERROR;
  }
}

}  // namespace

QVN_SANE_EXPORT SANE_Status sane_qvn_init(SANE_Int* version, SANE_Auth_Callback) {
  if (version != nullptr) *version = SANE_VERSION_CODE(SANE_CURRENT_MAJOR, SANE_CURRENT_MINOR, kBuild);
  return guarded([] {
    if (backend == nullptr) backend = new Backend;
    return SANE_STATUS_GOOD;
  });
}

QVN_SANE_EXPORT void sane_qvn_exit() {
  delete backend;
  backend = nullptr;
}

QVN_SANE_EXPORT SANE_Status sane_qvn_get_devices(const SANE_Device*** devices, SANE_Bool localOnly) {
  if (backend == nullptr || devices == nullptr) return SANE_STATUS_INVAL;
  return guarded([&] {
    auto listing = std::make_unique<DeviceListing>(backend->session, localOnly == SANE_TRUE);
    *devices = listing->devices();
    // What was told before is valid until now.
    backend->listing = std::move(listing);
    return SANE_STATUS_GOOD;
  });
}

QVN_SANE_EXPORT SANE_Status sane_qvn_open(SANE_String_Const name, SANE_Handle* handle) {
  if (backend == nullptr || handle == nullptr) return SANE_STATUS_INVAL;
  return guarded([&] {
    const auto found = DeviceListing(backend->session).find(name == nullptr ? "" : name);
    if (!found) return SANE_STATUS_INVAL;
    *handle = new OpenScanner(*found);
    return SANE_STATUS_GOOD;
  });
}

QVN_SANE_EXPORT void sane_qvn_close(SANE_Handle handle) { delete scannerOf(handle); }

QVN_SANE_EXPORT const SANE_Option_Descriptor* sane_qvn_get_option_descriptor(SANE_Handle handle,
                                                                             SANE_Int option) {
  return scannerOf(handle)->options().descriptor(option);
}

QVN_SANE_EXPORT SANE_Status sane_qvn_control_option(SANE_Handle handle, SANE_Int option, SANE_Action action,
                                                    void* value, SANE_Int* info) {
  return guarded([&] { return scannerOf(handle)->control(option, action, value, info); });
}

QVN_SANE_EXPORT SANE_Status sane_qvn_get_parameters(SANE_Handle handle, SANE_Parameters* parameters) {
  if (parameters != nullptr) *parameters = scannerOf(handle)->parameters();
  return SANE_STATUS_GOOD;
}

QVN_SANE_EXPORT SANE_Status sane_qvn_start(SANE_Handle handle) {
  return guarded([&] {
    scannerOf(handle)->start();
    return SANE_STATUS_GOOD;
  });
}

QVN_SANE_EXPORT SANE_Status sane_qvn_read(SANE_Handle handle, SANE_Byte* data, SANE_Int size,
                                          SANE_Int* length) {
  if (data == nullptr || size <= 0 || length == nullptr) return SANE_STATUS_INVAL;
  return guarded([&] { return scannerOf(handle)->read(data, size, length); });
}

QVN_SANE_EXPORT void sane_qvn_cancel(SANE_Handle handle) { scannerOf(handle)->cancel(); }

QVN_SANE_EXPORT SANE_Status sane_qvn_set_io_mode(SANE_Handle handle, SANE_Bool nonBlocking) {
  return scannerOf(handle)->setNonBlocking(nonBlocking == SANE_TRUE);
}

QVN_SANE_EXPORT SANE_Status sane_qvn_get_select_fd(SANE_Handle handle, SANE_Int* descriptor) {
  return descriptor == nullptr ? SANE_STATUS_INVAL : scannerOf(handle)->selectDescriptor(descriptor);
}

QVN_SANE_EXPORT SANE_String_Const sane_qvn_strstatus(SANE_Status status) {
  switch (status) {
    case SANE_STATUS_GOOD:
      return "Success";
    case SANE_STATUS_UNSUPPORTED:
      return "Operation not supported";
    case SANE_STATUS_CANCELLED:
      return "Operation was cancelled";
    case SANE_STATUS_DEVICE_BUSY:
      return "Device busy";
    case SANE_STATUS_INVAL:
      return "Invalid argument";
    case SANE_STATUS_EOF:
      return "End of file reached";
    case SANE_STATUS_JAMMED:
      return "Document feeder jammed";
    case SANE_STATUS_NO_DOCS:
      return "Document feeder out of documents";
    case SANE_STATUS_COVER_OPEN:
      return "Scanner cover is open";
    case SANE_STATUS_IO_ERROR:
      return "Error during device I/O";
    case SANE_STATUS_NO_MEM:
      return "Out of memory";
    case SANE_STATUS_ACCESS_DENIED:
      return "Access to resource has been denied";
  }
  return "Unknown status";
}

extern "C" {
QVN_SANE_ALIAS("sane_qvn_init") SANE_Status sane_init(SANE_Int*, SANE_Auth_Callback);
QVN_SANE_ALIAS("sane_qvn_exit") void sane_exit();
QVN_SANE_ALIAS("sane_qvn_get_devices") SANE_Status sane_get_devices(const SANE_Device***, SANE_Bool);
QVN_SANE_ALIAS("sane_qvn_open") SANE_Status sane_open(SANE_String_Const, SANE_Handle*);
QVN_SANE_ALIAS("sane_qvn_close") void sane_close(SANE_Handle);
QVN_SANE_ALIAS("sane_qvn_get_option_descriptor")
const SANE_Option_Descriptor* sane_get_option_descriptor(SANE_Handle, SANE_Int);
QVN_SANE_ALIAS("sane_qvn_control_option")
SANE_Status sane_control_option(SANE_Handle, SANE_Int, SANE_Action, void*, SANE_Int*);
QVN_SANE_ALIAS("sane_qvn_get_parameters") SANE_Status sane_get_parameters(SANE_Handle, SANE_Parameters*);
QVN_SANE_ALIAS("sane_qvn_start") SANE_Status sane_start(SANE_Handle);
QVN_SANE_ALIAS("sane_qvn_read") SANE_Status sane_read(SANE_Handle, SANE_Byte*, SANE_Int, SANE_Int*);
QVN_SANE_ALIAS("sane_qvn_cancel") void sane_cancel(SANE_Handle);
QVN_SANE_ALIAS("sane_qvn_set_io_mode") SANE_Status sane_set_io_mode(SANE_Handle, SANE_Bool);
QVN_SANE_ALIAS("sane_qvn_get_select_fd") SANE_Status sane_get_select_fd(SANE_Handle, SANE_Int*);
QVN_SANE_ALIAS("sane_qvn_strstatus") SANE_String_Const sane_strstatus(SANE_Status);
}
