#include "Spelling.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace replay {
namespace {

constexpr size_t kLongestCompared = 64;

char lowerCase(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

// Letters to put in, take out, change or swap with the next one until `from` is `to`.
size_t distance(std::string_view from, std::string_view to) {
    std::vector<size_t> beforeLast(to.size() + 1);
    std::vector<size_t> last(to.size() + 1);
    std::vector<size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    const auto same = [&](size_t i, size_t j) { return lowerCase(from[i]) == lowerCase(to[j]); };
    for (size_t i = 0; i < from.size(); ++i) {
        std::swap(beforeLast, last);
        std::swap(last, row);
        row[0] = i + 1;
        for (size_t j = 0; j < to.size(); ++j) {
            const size_t changed = last[j] + (same(i, j) ? 0 : 1);
            row[j + 1] = std::min({changed, last[j + 1] + 1, row[j] + 1});
            if (i > 0 && j > 0 && same(i, j - 1) && same(i - 1, j)) {
                row[j + 1] = std::min(row[j + 1], beforeLast[j - 1] + 1);
            }
        }
    }
    return row[to.size()];
}

}  // namespace

std::string didYouMean(std::string_view text, const std::vector<std::string_view>& candidates) {
    std::string_view nearest;
    size_t least = SIZE_MAX;
    for (const std::string_view candidate : candidates) {
        const size_t letters =
                text.size() > kLongestCompared ? SIZE_MAX : distance(text, candidate);
        if (letters < least && letters <= std::max(text.size(), candidate.size()) / 3) {
            least = letters;
            nearest = candidate;
        }
    }
    return nearest.empty() ? std::string() : "; did you mean " + std::string(nearest) + '?';
}

}  // namespace replay
