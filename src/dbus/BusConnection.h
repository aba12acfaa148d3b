#pragma once

#include <sdbus-c++/IConnection.h>

#include <memory>
#include <string>

namespace vessa {

// Opens a bus connection as named on a command line: "session", "system" or a
// D-Bus address such as "unix:path=/tmp/bus". sdbus-c++ reports failures by
// exception; this is the one place that turns them into a readable reason.
class BusConnection {
  public:
    // Null, with `error` set, when the bus cannot be reached.
    static std::unique_ptr<sdbus::IConnection> open(const std::string& bus, std::string* error);
    // "the session bus", "the system bus" or "the bus at ADDRESS", for messages.
    static std::string describe(const std::string& bus);

  private:
    BusConnection() = delete;
};

}  // namespace vessa
