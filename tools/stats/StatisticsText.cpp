#include "StatisticsText.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Bounded.h"
#include "Columns.h"
#include "Figures.h"
#include "Finding.h"
#include "Histogram.h"
#include "Row.h"
#include "Section.h"
#include "StageNames.h"
#include "Statistics.h"
#include "TerminalStyle.h"
#include "TerminalText.h"
#include "Times.h"

namespace stats {
namespace {

constexpr char kAll[] = "(all)";
constexpr char kOthers[] = "(others)";

using Column = view::Columns::Column;
using Cells = view::Columns::Cells;

Column nameColumn(std::string heading) {
    return {std::move(heading), view::Columns::Side::kLeft, view::Columns::Cut::kMiddle, 12};
}

Column numberColumn(std::string heading) {
    return {std::move(heading), view::Columns::Side::kRight, view::Columns::Cut::kNever, 0};
}

std::string tableText(const std::string& heading, std::vector<Column> columns,
                      const std::vector<Cells>& lines, const view::TerminalStyle& style) {
    if (lines.empty()) {
        return "";
    }
    view::Columns table(std::move(columns), 2, style);
    for (const Cells& line : lines) {
        table.measure(line);
    }
    table.fit();
    std::string text = '\n' + heading + '\n';
    text += view::inColour(table.headings(), view::Colour::kDim, style) + '\n';
    for (const Cells& line : lines) {
        text += table.line(line) + '\n';
    }
    return text;
}

std::string inMilliseconds(int64_t microseconds) {
    return view::milliseconds(static_cast<double>(microseconds) / 1000);
}

std::string inMilliseconds(std::optional<int64_t> microseconds) {
    return microseconds ? inMilliseconds(*microseconds) : "";
}

std::string share(uint64_t part, uint64_t all) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.2f %%",
                  all != 0 ? 100 * static_cast<double>(part) / static_cast<double>(all) : 0);
    return text;
}

void addTimeColumns(std::vector<Column>& columns) {
    columns.push_back(numberColumn("number"));
    columns.push_back(numberColumn("min"));
    for (const Percentile& percentile : kPercentiles) {
        columns.push_back(numberColumn(percentile.name));
    }
    columns.push_back(numberColumn("max"));
}

void addTimes(Cells& cells, const Histogram& times) {
    const bool isSome = times.count() != 0;
    cells.push_back(std::to_string(times.count()));
    cells.push_back(isSome ? inMilliseconds(times.minimum()) : "");
    for (const Percentile& percentile : kPercentiles) {
        cells.push_back(isSome ? inMilliseconds(valueAt(percentile, times)) : "");
    }
    cells.push_back(isSome ? inMilliseconds(times.maximum()) : "");
}

// All, then each group with its name, then the others.
std::vector<std::pair<std::string, const Figures*>> partsOf(const Statistics& statistics) {
    const bool isGrouped = !statistics.by().empty();
    std::vector<std::pair<std::string, const Figures*>> parts = {
            {isGrouped ? kAll : "", &statistics.all()}};
    for (const auto& [name, figures] : statistics.groups().named()) {
        parts.emplace_back(view::safeName(name), &figures);
    }
    if (statistics.groups().rest()) {
        parts.emplace_back(kOthers, statistics.groups().rest());
    }
    return parts;
}

std::string overview(const Figures& all) {
    view::Section section("captures", 0);
    section.add("number", std::to_string(all.captures));
    section.add("failed",
                std::to_string(all.failed) + " (" + share(all.failed, all.captures) + ")");
    for (size_t i = 0; i < kFailures.size(); ++i) {
        if (all.failures[i] != 0) {
            section.add(std::string("  ") + view::nameOf(kFailures[i]),
                        std::to_string(all.failures[i]));
        }
    }
    section.add("with calls without effect", std::to_string(all.withoutEffect));
    return section.text();
}

// What tells groups from each other at a glance.
std::string groupTable(const Statistics& statistics, const view::TerminalStyle& style) {
    if (statistics.by().empty()) {
        return "";
    }
    const bool ofCaptures = statistics.groupsCaptures();
    std::vector<Column> columns = {nameColumn(statistics.by()),
                                   numberColumn(ofCaptures ? "captures" : "nodes"),
                                   numberColumn("failed"), numberColumn("share")};
    columns.push_back(numberColumn("time-outs"));
    addTimeColumns(columns);
    std::vector<Cells> lines;
    for (const auto& [name, figures] : partsOf(statistics)) {
        const NodeFigures& nodes = figures->everyNode;
        const uint64_t number = ofCaptures ? figures->captures : nodes.nodes;
        const uint64_t failed = ofCaptures ? figures->failed : nodes.failed;
        lines.push_back({name, std::to_string(number), std::to_string(failed),
                         share(failed, number), ofCaptures ? "" : std::to_string(nodes.timeOuts)});
        addTimes(lines.back(), ofCaptures ? figures->toFlush : nodes.took);
    }
    return tableText("by " + statistics.by() + ", ms " +
                             (ofCaptures ? "from registration to flush" : "that nodes took"),
                     std::move(columns), lines, style);
}

using Part = std::pair<std::string, const Figures*>;

void addLine(std::vector<Cells>& lines, std::string what, const std::string& group,
             const Histogram& times) {
    if (times.count() != 0) {
        lines.push_back({std::move(what), group});
        addTimes(lines.back(), times);
    }
}

std::string timeTable(const Statistics& statistics, const std::vector<Part>& parts,
                      const view::TerminalStyle& style) {
    std::vector<Cells> lines;
    for (const auto& [group, figures] : parts) {
        addLine(lines,
                figures->hasStage() ? "shot to shot, from the stage"
                                    : "shot to shot, from registrations",
                group, figures->shots());
    }
    for (const auto& [group, figures] : parts) {
        addLine(lines, "registration to flush", group, figures->toFlush);
    }
    for (size_t i = 0; i < rows::kStages; ++i) {
        for (const auto& [group, figures] : parts) {
            addLine(lines, kStageNames[i], group, figures->stages[i]);
        }
    }
    std::vector<Column> columns = {nameColumn("time"), nameColumn(statistics.by())};
    addTimeColumns(columns);
    return tableText("times, ms", std::move(columns), lines, style);
}

void addNode(std::vector<Cells>& lines, const std::string& name, const std::string& group,
             const NodeFigures& figures) {
    lines.push_back({name, group, std::to_string(figures.nodes), std::to_string(figures.failed),
                     std::to_string(figures.timeOuts)});
    addTimes(lines.back(), figures.took);
}

std::string nodeTable(const Statistics& statistics, const std::vector<Part>& parts,
                      const view::TerminalStyle& style) {
    std::vector<Cells> lines;
    for (const auto& [node, figures] : statistics.all().nodes.named()) {
        for (const auto& [group, part] : parts) {
            const auto found = part->nodes.named().find(node);
            if (found != part->nodes.named().end()) {
                addNode(lines, view::safeName(node), group, found->second);
            }
        }
    }
    for (const auto& [group, part] : parts) {
        if (part->nodes.rest()) {
            addNode(lines, kOthers, group, *part->nodes.rest());
        }
    }
    std::vector<Column> columns = {nameColumn("node"), nameColumn(statistics.by()),
                                   numberColumn("nodes"), numberColumn("failed"),
                                   numberColumn("time-outs")};
    addTimeColumns(columns);
    return tableText("nodes, ms", std::move(columns), lines, style);
}

std::string slowestTable(const Statistics& statistics, const view::TerminalStyle& style) {
    std::vector<Cells> lines;
    for (const SlowCapture& capture : statistics.slowest().captures()) {
        lines.push_back({view::safeName(capture.name), inMilliseconds(capture.toFlush),
                         view::safe(capture.slowestNode.value_or("")),
                         inMilliseconds(capture.slowestNodeTook), capture.hasFailed ? "yes" : "",
                         view::safe(capture.runId)});
    }
    return tableText("slowest captures",
                     {nameColumn("capture"), numberColumn("flush ms"), nameColumn("slowest"),
                      numberColumn("ms"), numberColumn("failed"), nameColumn("run")},
                     lines, style);
}

}  // namespace

std::string statisticsText(const Statistics& statistics, const view::TerminalStyle& style) {
    const std::vector<Part> parts = partsOf(statistics);
    const std::vector<Part> all = {{"", &statistics.all()}};
    // Where a group's name is a node's, the table of nodes would have each line twice.
    const bool splitsNodes = statistics.groupsNodes() && statistics.by() != "node";
    return overview(statistics.all()) + groupTable(statistics, style) +
           timeTable(statistics, statistics.groupsCaptures() ? parts : all, style) +
           nodeTable(statistics, splitsNodes ? parts : all, style) +
           slowestTable(statistics, style);
}

}  // namespace stats
