#include "Summary.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Capture.h"
#include "Columns.h"
#include "Finding.h"
#include "FindingText.h"
#include "TerminalText.h"

namespace view {
namespace {

constexpr size_t kLongestName = 200;  // that a row keeps

using Counts = std::array<uint64_t, 3>;

std::vector<Columns::Column> columnsOfRows(size_t leastFindings) {
    constexpr auto kLeft = Columns::Side::kLeft;
    constexpr auto kRight = Columns::Side::kRight;
    constexpr auto kNever = Columns::Cut::kNever;
    return {{"capture", kLeft, Columns::Cut::kMiddle, 12},
            {"cameras", kLeft, Columns::Cut::kEnd, 7},
            {"flush ms", kRight, kNever, 0},
            {"nodes", kRight, kNever, 0},
            {"slowest", kLeft, Columns::Cut::kMiddle, 7},
            {"ms", kRight, kNever, 0},
            {"findings", kLeft, Columns::Cut::kEnd, leastFindings}};
}

std::string listed(const std::optional<std::vector<uint32_t>>& cameras) {
    if (!cameras) {
        return "";
    }
    std::string list;
    for (size_t i = 0; i < cameras->size() && list.size() < kLongestName; ++i) {
        list += (i == 0 ? "" : ",") + std::to_string((*cameras)[i]);
    }
    return list.empty() ? "none" : list;
}

uint64_t sumOf(const Counts& counts) {
    return std::accumulate(counts.begin(), counts.end(), uint64_t{0});
}

std::string andOthers(uint64_t count) {
    return count == 0 ? "" : " +" + std::to_string(count);
}

// The worst ones' number, such as "2 failures +1".
std::string inNumbers(const Counts& counts) {
    if (counts[0] != 0) {
        return counted(counts[0], "failure") + andOthers(counts[1] + counts[2]);
    }
    return counts[1] != 0   ? std::to_string(counts[1]) + " no effect" + andOthers(counts[2])
           : counts[2] != 0 ? counted(counts[2], "note")
                            : "";
}

std::string inWords(const std::string& worst, const Counts& counts) {
    return worst.empty() ? "" : worst + andOthers(sumOf(counts) - 1);
}

double orLeast(std::optional<double> value) {
    return value.value_or(-std::numeric_limits<double>::infinity());
}

}  // namespace

void Summary::add(const Capture& capture) {
    const auto kept = [&](const std::string& text) {
        return withoutMiddle(safeName(text), kLongestName, mStyle);
    };
    const Node* slowest = capture.slowestNode();
    Row row{capture.number,
            kept(capture.name),
            listed(capture.cameras),
            capture.duration(),
            capture.nodes.size(),
            slowest != nullptr ? kept(slowest->name) : "",
            slowest != nullptr ? slowest->duration() : std::nullopt,
            {},
            ""};
    Weight worst = Weight::kWorthKnowing;
    for (const Finding& finding : capture.findings) {
        const Weight weight = weightOf(finding.kind);
        row.findings[static_cast<size_t>(weight)] += finding.calls;
        if (row.worst.empty() || weight < worst) {
            row.worst = withoutEnd(safe(finding.text), kLongestName, mStyle);
            worst = weight;
        }
    }
    mKnowsCameras = mKnowsCameras || !row.cameras.empty();
    mKnowsDurations = mKnowsDurations || row.duration;
    mRows.push_back(std::move(row));
}

void Summary::sort() {
    std::sort(mRows.begin(), mRows.end(),
              [](const Row& a, const Row& b) { return a.number < b.number; });
    if (mSort == "time") {
        std::stable_sort(mRows.begin(), mRows.end(), [](const Row& a, const Row& b) {
            return std::make_pair(orLeast(a.duration), orLeast(a.slowestDuration)) >
                   std::make_pair(orLeast(b.duration), orLeast(b.slowestDuration));
        });
    } else if (mSort == "findings") {
        std::stable_sort(mRows.begin(), mRows.end(),
                         [](const Row& a, const Row& b) { return a.findings > b.findings; });
    }
}

std::vector<std::string> Summary::cells(const Row& row, const std::string& findings) const {
    return {row.name,
            mKnowsCameras && row.cameras.empty() ? kNotKnown : row.cameras,
            mKnowsDurations ? milliseconds(row.duration) : "",
            std::to_string(row.nodes),
            row.slowest,
            row.slowestDuration ? milliseconds(*row.slowestDuration) : "",
            findings};
}

void Summary::write(std::FILE* file) {
    sort();
    size_t leastFindings = 0;
    for (const Row& row : mRows) {
        leastFindings = std::max(leastFindings, inNumbers(row.findings).size());
    }
    Columns columns(columnsOfRows(leastFindings), 2, mStyle);
    for (const Row& row : mRows) {
        columns.measure(cells(row, inWords(row.worst, row.findings)));
    }
    columns.fit();
    std::fprintf(file, "%s\n", inColour(columns.headings(), Colour::kDim, mStyle).c_str());
    for (const Row& row : mRows) {
        const std::string words = inWords(row.worst, row.findings);
        const bool haveRoom = columnsOf(words) <= columns.lastWidth();
        const std::string line =
                columns.line(cells(row, haveRoom ? words : inNumbers(row.findings)));
        const Colour colour = row.findings[0] != 0   ? Colour::kRed
                              : row.findings[1] != 0 ? Colour::kYellow
                                                     : Colour::kNone;
        std::fprintf(file, "%s\n", inColour(line, colour, mStyle).c_str());
    }
}

}  // namespace view
