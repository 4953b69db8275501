#include "CaptureReport.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Capture.h"
#include "Columns.h"
#include "Finding.h"
#include "FindingText.h"
#include "MomentText.h"
#include "ReceivedText.h"
#include "Section.h"
#include "TerminalStyle.h"
#include "TerminalText.h"
#include "TimeLine.h"
#include "TimeLineText.h"
#include "View.h"

namespace view {
namespace {

std::string headText(const Capture& capture, const TerminalStyle& style) {
    const std::string head =
            "capture " + std::to_string(capture.number) + ": " + safeName(capture.name);
    return inColour(head, capture.hasFailed() ? Colour::kRed : Colour::kBold, style) +
           (capture.process.empty() ? "" : ", process " + safe(capture.process)) + '\n';
}

bool lacksLines(const Capture& capture) {
    return std::any_of(capture.findings.begin(), capture.findings.end(),
                       [](const Finding& finding) { return finding.kind == FindingKind::kGap; });
}

// When it was registered, flushed and removed. A source without all lines cannot tell that one of
// them did not happen.
std::string lifeText(const Capture& capture, const Session& session) {
    const std::string at = momentText(capture.registered, session);
    const bool isWhole = capture.isRegistered && !lacksLines(capture);
    const auto step = [&](bool has, const std::string& what, const char* noun, Time when) {
        return has       ? ", " + what + afterText(capture.registered, when)
               : isWhole ? ", not " + what
                         : std::string(", ") + noun + " not known";
    };
    return "  " +
           (capture.isRegistered ? "registered" + (at.empty() ? "" : ' ' + at)
                                 : std::string("registration not known")) +
           step(capture.isFlushed, "flushed", "flush", capture.flushed) +
           step(capture.isRemoved, "removed", "removal", capture.removed) + '\n';
}

std::string findingsText(const Capture& capture, const Session& session,
                         const TerminalStyle& style) {
    return capture.findings.empty()
                   ? ""
                   : "  findings\n" + findingLines(capture.findings, session, 4, style);
}

std::string camerasText(const Capture& capture) {
    if (!capture.cameras) {
        return kNotKnown;
    }
    std::vector<std::string> cameras;
    for (const uint32_t camera : *capture.cameras) {
        cameras.push_back(std::to_string(camera));
    }
    return joined(cameras);
}

std::string valuesText(const Capture& capture, Value::Group group, const char* heading) {
    Section section(heading);
    for (const Value& value : capture.values) {
        if (value.group == group) {
            section.add(safe(value.name), safe(value.text));
        }
    }
    if (group == Value::Group::kFrame) {
        section.add("cameras", camerasText(capture));
    }
    return section.text();
}

std::string algorithmsText(const Capture& capture) {
    if (!capture.algorithms) {
        return sectionLine("algorithms", kNotKnown);
    }
    std::vector<std::string> names;
    for (const std::string& name : *capture.algorithms) {
        names.push_back(safe(name));
    }
    return sectionLine("algorithms", joined(names));
}

std::string stagesText(const Capture& capture) {
    if (capture.stages && capture.stages->empty()) {
        return sectionLine("stages", "none");
    }
    Section section("stages");
    for (const Stage& stage : capture.stages.value_or(std::vector<Stage>())) {
        const std::string time = stage.isKnown ? std::to_string(stage.ms) + " ms" : kNotKnown;
        const bool hasNoTime = stage.number == 0 && stage.ms == -1;
        section.add(safe(stage.name), hasNoTime ? "" : time);
    }
    return section.text();
}

Columns::Cells cellsOf(const Node& node) {
    return {safeName(node.name),
            number(node.start),
            node.isTimedOut() ? "timed out" : number(node.second),
            number(node.completion),
            node.hasRun() ? milliseconds(node.duration()) : "not run",
            node.state.empty() ? kNotKnown : safe(node.state)};
}

std::string nodesText(const Capture& capture, const TerminalStyle& style) {
    if (capture.nodes.empty()) {
        // A source that knows the record knows all of its nodes.
        return sectionLine("nodes", capture.algorithms ? "none" : kNotKnown);
    }
    constexpr auto kLeft = Columns::Side::kLeft;
    constexpr auto kRight = Columns::Side::kRight;
    constexpr auto kNever = Columns::Cut::kNever;
    Columns columns({{"node", kLeft, Columns::Cut::kMiddle},
                     {"start", kRight, kNever, 0},
                     {"second", kRight, kNever, 0},
                     {"completion", kRight, kNever, 0},
                     {"took ms", kRight, kNever, 0},
                     {"state", kLeft, Columns::Cut::kEnd}},
                    4, style);
    for (const Node& node : capture.nodes) {
        columns.measure(cellsOf(node));
    }
    columns.fit();
    std::string text = "  nodes\n" + inColour(columns.headings(), Colour::kDim, style) + '\n';
    for (const Node& node : capture.nodes) {
        const Colour colour = node.isTimedOut() ? Colour::kRed : Colour::kNone;
        text += inColour(columns.line(cellsOf(node)), colour, style) + '\n';
    }
    return text;
}

std::string resultsText(const Capture& capture) {
    if (capture.results && capture.results->empty()) {
        return sectionLine("vendor results", "none");
    }
    Section section("vendor results");
    for (const VendorResult& result : capture.results.value_or(std::vector<VendorResult>())) {
        section.add(std::to_string(result.id), safe(result.text));
    }
    return section.text();
}

}  // namespace

std::string captureReport(const Capture& capture, const Session& session,
                          const std::optional<TimeLine>& timeLine, const TerminalStyle& style) {
    std::string text = headText(capture, style) + lifeText(capture, session) +
                       findingsText(capture, session, style) +
                       valuesText(capture, Value::Group::kFrame, "frame") +
                       valuesText(capture, Value::Group::kRequest, "request") +
                       valuesText(capture, Value::Group::kUserInterface, "user interface") +
                       valuesText(capture, Value::Group::kAutomatics, "3A") +
                       algorithmsText(capture) + stagesText(capture) + nodesText(capture, style) +
                       resultsText(capture);
    if (timeLine) {
        text += "  time line\n" + timeLineText(*timeLine, style);
    }
    for (size_t i = 0; i < capture.reports.size(); ++i) {
        text += receivedText(capture, i, session);
    }
    return text + '\n';
}

}  // namespace view
