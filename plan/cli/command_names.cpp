#include "plan/cli/command_names.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace {

// Two letters may be wrong, but never all of them.
std::size_t most_wrong(const std::string& word) {
    return std::min<std::size_t>(2, word.empty() ? 0 : word.size() - 1);
}

// The letters that must be put in, left out, exchanged or swapped to make one word of the other.
// Row i has what the first i letters of `a` need to become the first 0, 1, ... letters of `b`.
std::size_t distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> above;
    std::vector<std::size_t> last(b.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::vector<std::size_t> row = {i};
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t exchanged = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row.push_back(std::min({last[j] + 1, row[j - 1] + 1, exchanged}));
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                row[j] = std::min(row[j], above[j - 2] + 1);
            }
        }
        above = std::exchange(last, row);
    }
    return last.back();
}

}  // namespace

std::string unknown_command(const std::string& word, const std::vector<std::string>& names) {
    std::string nearest;
    std::size_t least = most_wrong(word) + 1;
    for (const std::string& name : names) {
        const std::size_t wrong = distance(word, name);
        if (wrong < least) {
            least = wrong;
            nearest = name;
        }
    }
    return "no command is called " + word +
           (nearest.empty() ? "; tarnhwplan help lists them" : "; did you mean " + nearest + "?");
}
