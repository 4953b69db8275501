#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Columns.h"
#include "Difference.h"
#include "Report.h"
#include "TerminalStyle.h"
#include "TerminalText.h"

namespace diff {
namespace {

constexpr size_t kMostLines = 3;      // of a group
constexpr size_t kLongestText = 200;  // of a cell
constexpr size_t kMostWays = 100;     // of a group that are counted apart

std::string durationText(int64_t us) {
    return view::milliseconds(static_cast<double>(us) / 1e3) + " ms";
}

std::string changeText(const Difference& difference) {
    if (!difference.change) {
        return "";
    }
    return (*difference.change > 0 ? "+" : "") + durationText(*difference.change);
}

std::string shown(const std::string& text, const view::TerminalStyle& style) {
    return view::withoutEnd(view::safe(text), kLongestText, style);
}

// Of captures that differ alike.
std::string countText(uint64_t captures) {
    return captures <= 1 ? "" : std::to_string(captures);
}

std::string whatDiffers(const Difference& difference) {
    std::string node = "node " + difference.node;
    switch (difference.kind) {
        case Kind::kSwitch:
            return "switch " + difference.item;
        case Kind::kVendorResult:
            return "vendor result " + difference.item;
        case Kind::kNodeState:
            return node + ": " + difference.item;
        case Kind::kNode:
            return node;
        case Kind::kStage:
            return "stage " + difference.item;
        case Kind::kDuration:
            return difference.node.empty() ? "time " + difference.item : "time of " + node;
        default:
            return difference.item;
    }
}

std::string absentText(Kind kind) {
    return kind == Kind::kParameter || kind == Kind::kStage ? "not told" : "missing";
}

// How often an error was told.
std::string timesText(const std::string& count) {
    return count == "0" ? "no" : count == "1" ? "yes" : count + " times";
}

std::string sideText(const Difference& difference, const std::optional<std::string>& side,
                     const view::TerminalStyle& style) {
    if (!side) {
        return absentText(difference.kind);
    }
    if (difference.kind == Kind::kError) {
        return timesText(*side);
    }
    if (difference.change) {
        return durationText(std::atoll(side->c_str()));
    }
    return side->empty() ? "\"\"" : shown(*side, style);
}

}  // namespace

TableReport::Line* TableReport::lineOf(Group& group, const Difference& difference) {
    const auto isSame = [&](const Line& line) {
        return difference.change ||
               (line.example.a == difference.a && line.example.b == difference.b);
    };
    auto& lines = group.lines;
    const auto known = std::find_if(lines.begin(), lines.end(), isSame);
    if (known != lines.end()) {
        return &*known;
    }
    return lines.size() < kMostWays ? &lines.emplace_back() : nullptr;
}

void TableReport::add(const Difference& difference, const Where& where) {
    Group& group = mGroups[difference.kind][{difference.item, difference.node}];
    ++group.captures;
    Line* line = lineOf(group, difference);
    if (line == nullptr) {
        ++group.others;
        return;
    }
    const int64_t size = std::abs(difference.change.value_or(0));
    if (++line->captures == 1 || size > group.largestChange) {
        group.largestChange = size;
        line->example = difference;
        line->capture = where.name;
    }
}

std::vector<std::vector<std::string>> TableReport::tableCells() const {
    std::vector<std::vector<std::string>> all;
    for (const auto& [kind, byKey] : mGroups) {
        std::vector<const Group*> groups;
        for (const auto& [key, group] : byKey) {
            groups.push_back(&group);
        }
        std::stable_sort(groups.begin(), groups.end(), [](const Group* a, const Group* b) {
            return std::make_pair(a->largestChange, a->captures) >
                   std::make_pair(b->largestChange, b->captures);
        });
        for (const Group* group : groups) {
            addCells(*group, all);
        }
    }
    return all;
}

void TableReport::addCells(const Group& group, std::vector<Cells>& all) const {
    std::vector<Line> lines = group.lines;
    std::stable_sort(lines.begin(), lines.end(),
                     [](const Line& a, const Line& b) { return a.captures > b.captures; });
    uint64_t others = group.others;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (i >= kMostLines) {
            others += lines[i].captures;
            continue;
        }
        const Difference& example = lines[i].example;
        all.push_back({shown(whatDiffers(example), mStyle), sideText(example, example.a, mStyle),
                       sideText(example, example.b, mStyle), changeText(example),
                       countText(lines[i].captures), shown(lines[i].capture, mStyle)});
    }
    if (others != 0) {
        all.push_back({shown(whatDiffers(lines.front().example), mStyle), "other", "values", "",
                       std::to_string(others), ""});
    }
}

void TableReport::write(std::FILE* file, const Counts& counts) {
    using Side = view::Columns::Side;
    using Cut = view::Columns::Cut;
    const std::vector<Cells> cells = tableCells();
    view::Columns columns({{"difference", Side::kLeft, Cut::kEnd, 26},
                           {"A", Side::kLeft, Cut::kMiddle, 12},
                           {"B", Side::kLeft, Cut::kMiddle, 12},
                           {"change", Side::kRight, Cut::kNever, 0},
                           {"count", Side::kRight, Cut::kNever, 0},
                           {"capture", Side::kLeft, Cut::kMiddle, 14}},
                          2, mStyle);
    for (const Cells& line : cells) {
        columns.measure(line);
    }
    columns.fit();
    if (!cells.empty()) {
        std::fprintf(file, "A  %s\nB  %s\n\n%s\n", view::safe(mA).c_str(), view::safe(mB).c_str(),
                     view::inColour(columns.headings(), view::Colour::kDim, mStyle).c_str());
    }
    for (const Cells& line : cells) {
        std::fprintf(file, "%s\n", columns.line(line).c_str());
    }
    std::fprintf(file, "%s%s\n", cells.empty() ? "" : "\n", summaryOf(counts).c_str());
}

std::string summaryOf(const Counts& counts) {
    std::string text = view::counted(counts.pairs, "capture") + " compared";
    const auto add = [&](uint64_t count, const std::string& what) {
        text += count != 0 ? ", " + what : "";
    };
    add(counts.areSame(), "none differs");
    add(counts.differing, std::to_string(counts.differing) +
                                  (counts.differing == 1 ? " of them differs" : " of them differ"));
    add(counts.onlyInA, std::to_string(counts.onlyInA) + " only in A");
    add(counts.onlyInB, std::to_string(counts.onlyInB) + " only in B");
    add(counts.ofSession, view::counted(counts.ofSession, "difference") + " of the sessions");
    return text;
}

}  // namespace diff
