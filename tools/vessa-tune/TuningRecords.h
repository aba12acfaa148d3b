#pragma once

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "EqPlot.h"

namespace vessa {

class TuningFileParser;

// The records of one tuning file exactly as the service's parser reads them, in the
// forms vessa-tune prints, compares and plots.
class TuningRecords {
  public:
    using Json = nlohmann::ordered_json;
    // Record ("profile 2, endpoint headphone") to parameter name to its values, or to
    // a record's own attribute ("(name)") as text.
    using Flat = std::map<std::string, std::map<std::string, Json>>;

    TuningRecords();
    ~TuningRecords();

    // False, with `error` set, when the file cannot be read.
    bool load(const std::string& path, std::string* error);

    // Every record, or one profile (`profile` >= 0) or one tuning (`tuning` not empty).
    Json toJson(int profile = -1, const std::string& tuning = "") const;
    Flat flatten() const;
    // The graphic-EQ gains of each profile (or of one), and the IEQ preset targets.
    std::vector<EqSeries> geqCurves(int profile = -1) const;
    std::vector<EqSeries> ieqCurves() const;

    // One entry per parameter that differs; an absent side is null.
    static Json diff(const Flat& before, const Flat& after);

  private:
    std::unique_ptr<TuningFileParser> mParser;
};

}  // namespace vessa
