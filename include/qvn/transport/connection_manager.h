// ConnectionManager: gives the connections of a transport by device and name.
#pragma once

#include <string>

#include "qvn/transport/connectable.h"

namespace qvn {

// The names of the connections that the library asks for.
namespace connection_name {
inline constexpr char kBidi[] = "bidi";
inline constexpr char kPrint[] = "print";
inline constexpr char kAlert[] = "alert";
inline constexpr char kCache[] = "cache";
inline constexpr char kConfiguration[] = "configuration";
}  // namespace connection_name

// Lives as long as its module is loaded; any thread may call it.
//
// The order of the virtual operations is part of the interface between the library and its plug-ins.
class ConnectionManager {
 public:
  virtual ~ConnectionManager() = default;

  // The connection of that name to the device that the attribute text describes (keyed by its handle), not
  // opened. Asking again while one exists gives the same object. Never null. The transport owns it; it is
  // valid until it was released as often as it was asked for and its tag is 0. A holder that takes its tag
  // off releases it once more: the manager then has the occasion to drop it.
  virtual Connectable* getConnection(const std::string& deviceAttributes,
                                     const std::string& connectionName) = 0;
  virtual void releaseConnection(Connectable* connection) = 0;
};

}  // namespace qvn
