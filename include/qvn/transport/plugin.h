// The entry points that a transport module exports with C linkage. docs/transport-plugins.md walks through a
// complete module.
#pragma once

#include <cstdint>

#include "qvn/transport/connection_manager.h"
#include "qvn/transport/discoverer.h"
#include "qvn/transport/visitor_manager.h"

// The version of the interface that the headers in this folder describe: it changes whenever a class here
// gets, loses or moves a virtual operation or a member. 4: Data reads through a virtual operation, its last
// one, and may be replaced by assignment also when it is lent in place. 5: a device takes an event in the
// operation before the one that takes data.
#define QVN_TRANSPORT_ABI_VERSION 5u

#define QVN_TRANSPORT_EXPORT extern "C" __attribute__((visibility("default")))

namespace qvn::transport_entry {

inline constexpr char kGetInfo[] = "TransportGetInfo";
inline constexpr char kInitialize[] = "TransportInitialize";
inline constexpr char kUninitialize[] = "TransportUninitialize";
inline constexpr char kInstall[] = "TransportInstall";
inline constexpr char kUninstall[] = "TransportUninstall";
inline constexpr char kGetConnectionManager[] = "TransportGetConnectionManager";
inline constexpr char kGetVisitorManager[] = "TransportGetVisitorManager";
inline constexpr char kGetDiscoverer[] = "TransportGetDiscoverer";
// Optional. A module that has it and answers another number than QVN_TRANSPORT_ABI_VERSION is refused.
inline constexpr char kGetAbiVersion[] = "TransportGetAbiVersion";

// Writes an attribute text with "Transport" (the transport's name) and "TransportType" ("LOCAL_TRANSPORT" or
// "NETWORK_TRANSPORT") and its terminator into the zero-filled buffer. `reserved` points to a 0. Called
// after kInitialize, when a module is added, installed or removed; 0 or why not.
using GetInfo = std::uint32_t(char* buffer, std::uint32_t size, std::uint32_t* reserved);

// Called when the process loads the module, before any other entry point but kGetAbiVersion; once, unless the
// module is unloaded and loaded again. 0 when the module is ready; else it is unloaded, without
// kUninitialize.
using Initialize = std::uint32_t();
// Called before the process unloads the module, which stops its threads and closes its connections. The
// result is ignored.
using Uninitialize = std::uint32_t();
// Called when the transport is added to the machine; 0 or why not.
using Install = std::uint32_t();
// Called when the library is taken off the machine; the result is ignored.
using Uninstall = std::uint32_t();

// Each gives an object that lives until kUninitialize; null counts as a module that cannot be used.
using GetConnectionManager = ConnectionManager*();
using GetVisitorManager = VisitorManager*();
using GetDiscoverer = Discoverer*();

using GetAbiVersion = std::uint32_t();

}  // namespace qvn::transport_entry
