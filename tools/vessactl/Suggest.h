#pragma once

#include <string>
#include <vector>

namespace vessa {

// "Did you mean" for a word the user mistyped: the closest of `candidates` by edit
// distance (case ignored), or "" when none is close enough to be a likely typo.
class Suggest {
  public:
    static std::string closest(const std::string& word, const std::vector<std::string>& candidates);
    // " (did you mean 'status'?)" or "".
    static std::string hint(const std::string& word, const std::vector<std::string>& candidates);

  private:
    Suggest() = delete;
    static size_t distance(const std::string& a, const std::string& b);
};

}  // namespace vessa
