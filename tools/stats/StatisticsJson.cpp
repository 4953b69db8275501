#include "StatisticsJson.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Bounded.h"
#include "Figures.h"
#include "Finding.h"
#include "Histogram.h"
#include "JsonText.h"
#include "Row.h"
#include "StageNames.h"
#include "Statistics.h"
#include "Times.h"

namespace stats {
namespace {

constexpr int kFormatVersion = 1;

// An object or an array, member by member.
class Json {
  public:
    explicit Json(char open) : mText(1, open) {}

    Json& raw(std::string_view key, const std::string& value) {
        return element('"' + std::string(key) + "\":" + value);
    }
    Json& number(std::string_view key, int64_t value) { return raw(key, std::to_string(value)); }
    Json& count(std::string_view key, uint64_t value) { return raw(key, std::to_string(value)); }
    Json& text(std::string_view key, const std::string& value) {
        return raw(key, view::jsonText(value));
    }
    Json& element(const std::string& value) {
        mText += (mText.size() > 1 ? "," : "") + value;
        return *this;
    }
    std::string close() const { return mText + (mText[0] == '{' ? '}' : ']'); }

  private:
    std::string mText;
};

void addTimes(Json& json, const Histogram& times) {
    json.count("number", times.count());
    if (times.count() == 0) {
        return;
    }
    json.number("min_us", times.minimum());
    for (const Percentile& percentile : kPercentiles) {
        if (const auto value = valueAt(percentile, times)) {
            json.number(std::string(percentile.name) + "_us", *value);
        }
    }
    json.number("max_us", times.maximum());
}

std::string timesJson(const Histogram& times) {
    Json json('{');
    addTimes(json, times);
    return json.close();
}

std::string shotsJson(const Figures& figures) {
    Json json('{');
    json.text("from", figures.hasStage() ? "stage" : "registrations");
    addTimes(json, figures.shots());
    return json.close();
}

std::string stagesJson(const Figures& figures) {
    Json json('[');
    for (size_t i = 0; i < rows::kStages; ++i) {
        if (figures.stages[i].count() != 0) {
            Json stage('{');
            stage.count("stage", i).text("name", kStageNames[i]);
            addTimes(stage, figures.stages[i]);
            json.element(stage.close());
        }
    }
    return json.close();
}

void addNodes(Json& json, const NodeFigures& figures) {
    json.count("nodes", figures.nodes)
            .count("failed", figures.failed)
            .count("time_outs", figures.timeOuts);
    addTimes(json, figures.took);
}

std::string nodesJson(const Bounded<NodeFigures>& nodes) {
    Json json('[');
    for (const auto& [name, figures] : nodes.named()) {
        Json node('{');
        node.text("node", name);
        addNodes(node, figures);
        json.element(node.close());
    }
    return json.close();
}

void addCaptures(Json& json, const Figures& figures) {
    json.count("captures", figures.captures).count("failed", figures.failed);
    Json failures('{');
    for (size_t i = 0; i < kFailures.size(); ++i) {
        failures.count(view::nameOf(kFailures[i]), figures.failures[i]);
    }
    json.raw("failed_by_kind", failures.close())
            .count("with_calls_without_effect", figures.withoutEffect)
            .raw("shot_to_shot", shotsJson(figures))
            .raw("to_flush", timesJson(figures.toFlush))
            .raw("stages", stagesJson(figures));
}

void addEveryNode(Json& json, const Figures& figures) {
    Json every('{');
    addNodes(every, figures.everyNode);
    json.raw("all_nodes", every.close()).raw("nodes", nodesJson(figures.nodes));
    if (figures.nodes.rest()) {
        Json rest('{');
        addNodes(rest, *figures.nodes.rest());
        json.raw("other_nodes", rest.close());
    }
}

std::string slowestJson(const SlowestCaptures& slowest) {
    Json json('[');
    for (const SlowCapture& capture : slowest.captures()) {
        Json entry('{');
        entry.text("name", capture.name)
                .text("run_id", capture.runId)
                .number("capture_seq", capture.captureSeq)
                .number("to_flush_us", capture.toFlush)
                .raw("has_failed", capture.hasFailed ? "true" : "false");
        if (capture.slowestNode) {
            entry.text("slowest_node", *capture.slowestNode);
        }
        if (capture.slowestNodeTook) {
            entry.number("slowest_node_us", *capture.slowestNodeTook);
        }
        json.element(entry.close());
    }
    return json.close();
}

void addFigures(Json& json, const Statistics& statistics, const Figures& figures) {
    if (statistics.groupsCaptures()) {
        addCaptures(json, figures);
    }
    if (statistics.groupsNodes()) {
        addEveryNode(json, figures);
    }
}

void addGroups(Json& json, const Statistics& statistics) {
    Json groups('[');
    for (const auto& [value, figures] : statistics.groups().named()) {
        Json group('{');
        group.text("value", value);
        addFigures(group, statistics, figures);
        groups.element(group.close());
    }
    json.text("by", statistics.by()).raw("groups", groups.close());
    if (statistics.groups().rest()) {
        Json rest('{');
        addFigures(rest, statistics, *statistics.groups().rest());
        json.raw("other_groups", rest.close());
    }
}

}  // namespace

std::string statisticsJson(const Statistics& statistics) {
    Json json('{');
    json.number("format_version", kFormatVersion);
    addCaptures(json, statistics.all());
    addEveryNode(json, statistics.all());
    json.raw("slowest", slowestJson(statistics.slowest()));
    if (!statistics.by().empty()) {
        addGroups(json, statistics);
    }
    return json.close() + '\n';
}

}  // namespace stats
