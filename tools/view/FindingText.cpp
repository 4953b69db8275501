#include "FindingText.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Capture.h"
#include "Columns.h"
#include "Finding.h"
#include "TerminalStyle.h"
#include "TerminalText.h"
#include "View.h"

namespace view {
namespace {

constexpr size_t kLongestName = 40;
constexpr size_t kLongestText = 500;

struct FindingLine {
    Weight weight;
    Columns::Cells cells;  // place, capture, text
};

// A line may be wider than the terminal: the place and the reason stay whole.
std::string textOf(const std::vector<FindingLine>& lines, size_t indent, TerminalStyle style) {
    style.width = std::numeric_limits<size_t>::max();
    Columns columns({{""}, {""}, {""}}, indent, style);
    for (const FindingLine& line : lines) {
        columns.measure(line.cells);
    }
    std::string text;
    for (const FindingLine& line : lines) {
        text += inColour(columns.line(line.cells), colourOf(line.weight), style) + '\n';
    }
    return text;
}

FindingLine lineOf(const Finding& finding, const std::string& name, const Session& session) {
    return {weightOf(finding.kind), {placeText(finding.place, session), name, safe(finding.text)}};
}

std::string andMore(uint64_t count, size_t indent) {
    return count == 0 ? ""
                      : std::string(indent, ' ') + "... and " + std::to_string(count) + " more\n";
}

}  // namespace

Weight weightOf(FindingKind kind) {
    return meansFailure(kind)    ? Weight::kFailure
           : meansNoEffect(kind) ? Weight::kNoEffect
                                 : Weight::kWorthKnowing;
}

Colour colourOf(Weight weight) {
    return weight == Weight::kFailure    ? Colour::kRed
           : weight == Weight::kNoEffect ? Colour::kYellow
                                         : Colour::kNone;
}

std::string placeText(const Place& place, const Session& session) {
    if (place.line == 0) {
        return "";
    }
    if (place.source >= session.sources.size()) {
        return "?:" + std::to_string(place.line);
    }
    const std::string& name = session.sources[place.source];
    const std::string source = name == "-" ? "standard input" : safe(name);
    return source + ':' + std::to_string(place.line);
}

std::string findingLines(const std::vector<Finding>& findings, const Session& session,
                         size_t indent, const TerminalStyle& style) {
    std::vector<FindingLine> lines;
    lines.reserve(findings.size());
    for (const Finding& finding : findings) {
        lines.push_back(lineOf(finding, "", session));
    }
    return textOf(lines, indent, style);
}

std::string sessionFindingLines(const Session& session, size_t indent, const TerminalStyle& style) {
    const size_t shown = std::min(session.findings.size(), WorstFindings::kMost);
    const auto begin = session.findings.begin();
    const std::vector<Finding> first(begin, begin + static_cast<std::ptrdiff_t>(shown));
    return findingLines(first, session, indent, style) +
           andMore(session.findings.size() - shown, indent);
}

bool WorstFindings::Entry::operator<(const Entry& other) const {
    return std::tie(weight, capture, position) <
           std::tie(other.weight, other.capture, other.position);
}

void WorstFindings::add(const Capture& capture, const Session& session) {
    const TerminalStyle style;
    for (size_t i = 0; i < capture.findings.size(); ++i) {
        const Finding& finding = capture.findings[i];
        Entry entry{weightOf(finding.kind), capture.number, i, "", "", ""};
        if (mEntries.size() == kMost) {
            ++mLeftOut;
            if (!(entry < *mEntries.rbegin())) {
                continue;
            }
            mEntries.erase(std::prev(mEntries.end()));
        }
        entry.place = placeText(finding.place, session);
        entry.name = withoutMiddle(safeName(capture.name), kLongestName, style);
        entry.text = withoutEnd(safe(finding.text), kLongestText, style);
        mEntries.insert(std::move(entry));
    }
}

std::string WorstFindings::lines(size_t indent, const TerminalStyle& style) const {
    std::vector<FindingLine> lines;
    lines.reserve(mEntries.size());
    for (const Entry& entry : mEntries) {
        lines.push_back({entry.weight, {entry.place, entry.name, entry.text}});
    }
    return textOf(lines, indent, style) + andMore(mLeftOut, indent);
}

}  // namespace view
