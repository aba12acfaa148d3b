#pragma once

#include <string>
#include <vector>

namespace vessa {

// One curve: a name for the legend and its points (Hz, gain).
struct EqSeries {
    std::string name;
    std::vector<double> frequencies;
    std::vector<double> gains;
};

// Draws EQ curves against frequency on a log axis with cairo, as SVG or PNG (chosen
// by the output file's extension).
class EqPlot {
  public:
    static constexpr int kWidth = 960;
    static constexpr int kHeight = 540;

    // 0, or -EINVAL (with `error` set) for an unknown extension, no series, or a
    // file that cannot be written.
    static int write(const std::string& path, const std::string& title, const std::string& yLabel,
                     const std::vector<EqSeries>& series, std::string* error);

  private:
    EqPlot() = delete;
};

}  // namespace vessa
