#pragma once

namespace vessa {

// Where the service lives on the bus. Clients and the daemon both use these;
// the interface names come with the generated classes (INTERFACE_NAME).
constexpr const char* kPqsServiceName = "vendor.vessa_v3_6.hardware.pqs360";
constexpr const char* kPqsObjectPath = "/vendor/vessa_v3_6/hardware/pqs360/IPqs/default";
// A client registering this path has no callback object.
constexpr const char* kNullCallbacksPath = "/";

}  // namespace vessa
