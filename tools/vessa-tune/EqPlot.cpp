#include "EqPlot.h"

#include <cerrno>

namespace vessa {

int EqPlot::write(const std::string&, const std::string&, const std::string&,
                  const std::vector<EqSeries>&, std::string* error) {
    *error = "plotting is not written yet";
    return -EINVAL;
}

}  // namespace vessa
