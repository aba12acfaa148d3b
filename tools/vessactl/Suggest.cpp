#include "Suggest.h"

#include <algorithm>
#include <cctype>

namespace vessa {

size_t Suggest::distance(const std::string& a, const std::string& b) {
    // Levenshtein with adjacent transpositions, one row at a time plus the one before.
    std::vector<size_t> before(b.size() + 1), previous(b.size() + 1), current(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) previous[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        current[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const bool same = std::tolower(static_cast<unsigned char>(a[i - 1])) ==
                              std::tolower(static_cast<unsigned char>(b[j - 1]));
            current[j] = std::min(
                    {previous[j] + 1, current[j - 1] + 1, previous[j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                current[j] = std::min(current[j], before[j - 2] + 1);
            }
        }
        before.swap(previous);
        previous.swap(current);
    }
    return previous[b.size()];
}

std::string Suggest::closest(const std::string& word, const std::vector<std::string>& candidates) {
    // A third of the word may be wrong, at least one character and at most three.
    const size_t allowed = std::clamp<size_t>(word.size() / 3, 1, 3);
    std::string best;
    size_t bestDistance = allowed + 1;
    for (const std::string& candidate : candidates) {
        size_t d = distance(word, candidate);
        // A word that begins a candidate ("dialog" for "dialog-enhancer") is close too.
        if (word.size() >= 3 && candidate.compare(0, word.size(), word) == 0) d = 1;
        if (d < bestDistance) {
            bestDistance = d;
            best = candidate;
        }
    }
    return best;
}

std::string Suggest::hint(const std::string& word, const std::vector<std::string>& candidates) {
    std::string best = closest(word, candidates);
    return best.empty() ? "" : " (did you mean '" + best + "'?)";
}

}  // namespace vessa
