#pragma once

#include <android/log.h>
#include <gtest/gtest.h>
#include <libxml/xmlerror.h>

#include <string>
#include <vector>

#include "TempDir.h"
#include "platform/LogCapture.h"
#include "tuning/SetterCollection.h"
#include "tuning/TagIterator.h"
#include "tuning/TuningFileParser.h"

namespace vessa::test {

using P = Parameter;
using V = std::vector<int>;

// The record's values of one parameter; {-999} when it holds none.
inline V at(const ParameterValues* record, Parameter p) {
    auto it = record->values().find(p);
    return it == record->values().end() ? V{-999} : it->second;
}

// Base of the tuning tests: captures the log, keeps libxml2's own reports of
// malformed files off the terminal, and writes documents into a temporary folder.
class TuningTest : public ::testing::Test {
  protected:
    TuningTest() {
        xmlSetStructuredErrorFunc(nullptr, [](void*, xmlErrorPtr) {});
    }

    std::string writeFile(const std::string& content, const std::string& name = "tuning.xml") {
        return mDir.write(name, content);
    }

    // A document whose root holds `body`, one element per line as tuning files are.
    std::string writeDocument(const std::string& body) {
        return writeFile("<root>\n" + body + "\n</root>\n");
    }

    LogCapture mLog;
    TempDir mDir;
};

}  // namespace vessa::test
