#pragma once

#include <gtest/gtest.h>
#include <libxml/xmlerror.h>

#include <string>

#include "TempDir.h"
#include "platform/LogCapture.h"
#include "tuning/TagIterator.h"

namespace vessa::test {

// Base of the tuning tests: captures the log, keeps libxml2's own reports of
// malformed files off the terminal, and writes documents into a temporary folder.
class TuningTest : public ::testing::Test {
  protected:
    void SetUp() override {
        xmlSetGenericErrorFunc(nullptr, &ignoreGenericError);
        xmlSetStructuredErrorFunc(nullptr, &ignoreStructuredError);
    }

    std::string writeFile(const std::string& content, const std::string& name = "tuning.xml") {
        return mDir.write(name, content);
    }

    // A document whose root holds `body`, one element per line as tuning files are.
    std::string writeDocument(const std::string& body) {
        return writeFile("<root>\n" + body + "\n</root>\n");
    }

    // Opens a document holding `body` and stands on its first element.
    void openAtFirstElement(TagIterator& it, const std::string& body) {
        ASSERT_EQ(0, it.init(writeDocument(body)));
        while (it.isCurValid() && !it.isElementNode()) it.next();
        ASSERT_TRUE(it.isElementNode());
    }

    // True if the iterator's stack held nothing: the probe logs when it is empty.
    bool stackIsEmpty(TagIterator& it) {
        size_t before = mLog.count("TagIterator", "It's empty in node stack!");
        it.popNode();
        return mLog.count("TagIterator", "It's empty in node stack!") == before + 1;
    }

    LogCapture mLog;
    TempDir mDir;

  private:
    static void ignoreGenericError(void*, const char*, ...) {}
    static void ignoreStructuredError(void*, xmlErrorPtr) {}
};

}  // namespace vessa::test
