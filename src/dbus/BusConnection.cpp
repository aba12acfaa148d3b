#include "dbus/BusConnection.h"

#include <sdbus-c++/Error.h>

#include <cstdlib>

namespace vessa {

std::unique_ptr<sdbus::IConnection> BusConnection::open(const std::string& bus,
                                                        std::string* error) {
    try {
        if (bus == "session") return sdbus::createSessionBusConnection();
        if (bus == "system") return sdbus::createSystemBusConnection();
        return sdbus::createSessionBusConnectionWithAddress(bus);
    } catch (const sdbus::Error& e) {
        if (error != nullptr) {
            *error = "cannot connect to " + describe(bus) + ": " + e.getMessage();
            if (bus == "session" && getenv("DBUS_SESSION_BUS_ADDRESS") == nullptr) {
                *error += " (DBUS_SESSION_BUS_ADDRESS is not set; use --bus ADDRESS)";
            }
        }
        return nullptr;
    }
}

std::string BusConnection::describe(const std::string& bus) {
    if (bus == "session" || bus == "system") return "the " + bus + " bus";
    return "the bus at " + bus;
}

}  // namespace vessa
