#pragma once

#include <string>
#include <vector>

namespace vessa {

// One thing a tuning engineer should know about a tuning file, at its line.
struct Finding {
    enum class Severity { WARNING, ERROR };
    Severity severity;
    std::string file;
    int line;  // 0 when the finding concerns the whole file
    std::string message;
};

// Reports what the service's parser will skip, default, misread or drop in a tuning
// file, with file:line, and validates the file against the tuning XML Schema.
class TuningChecker {
  public:
    // `schemaPath`: the XML Schema of the tuning format (etc/tuning.xsd).
    explicit TuningChecker(std::string schemaPath);

    // `defaultFile` is empty for a default file; for an OEM file it names the default
    // file the OEM file is merged into.
    std::vector<Finding> check(const std::string& file, const std::string& defaultFile = "");

  private:
    std::string mSchemaPath;
};

}  // namespace vessa
