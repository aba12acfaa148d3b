#pragma once

#include <gtest/gtest.h>

#include "SampleRoot.h"

namespace android::test {

// The one device root of the service tests, installed before the first test of the
// binary; every test file asks for it here, so it is registered once.
inline vessa::test::SampleRootEnvironment& serviceRoot() {
    static auto* environment = static_cast<vessa::test::SampleRootEnvironment*>(
            ::testing::AddGlobalTestEnvironment(new vessa::test::SampleRootEnvironment()));
    return *environment;
}

}  // namespace android::test
