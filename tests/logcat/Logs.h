// Logs for the tests: genuine lines, and what was read of them.

#pragma once

#include <log/logprint.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Capture.h"
#include "Finding.h"
#include "Input.h"
#include "LogLine.h"
#include "LogcatReader.h"
#include "View.h"

namespace logcat {

constexpr int64_t kSecond = 1000000000;

// What the platform's own formatter makes of an entry.
struct LogEntry {
    std::string tag;
    std::string message;
    int64_t at = 0;  // nanoseconds since 1970
    int32_t pid = 1234;
    int32_t tid = 5678;
};
inline std::string formatted(const std::vector<std::string>& formats, const LogEntry& entry) {
    AndroidLogFormat* format = android_log_format_new();
    for (const std::string& name : formats) {
        android_log_setPrintFormat(format, android_log_formatFromString(name.c_str()));
    }
    AndroidLogEntry raw{};
    raw.tv_sec = entry.at / kSecond;
    raw.tv_nsec = entry.at % kSecond;
    raw.priority = ANDROID_LOG_INFO;
    raw.uid = 1047;
    raw.pid = entry.pid;
    raw.tid = entry.tid;
    raw.tag = entry.tag.c_str();
    raw.tagLen = entry.tag.size() + 1;
    raw.message = entry.message.c_str();
    raw.messageLen = entry.message.size();
    char buffer[512];
    size_t length = 0;
    char* line = android_log_formatLogLine(format, buffer, sizeof(buffer), &raw, &length);
    std::string text(line, length);
    if (line != buffer) {
        std::free(line);  // NOLINT: the formatter has it from malloc
    }
    android_log_format_free(format);
    return text;
}

// A log with a line for each millisecond. "M TEXT" is the manager's and "E TEXT" the collector's,
// "m", "e", "O" and "C" stand before texts under the manager's, the engine's, the overlap library's
// and the logger's tags, and nothing makes an empty line. "on TID", "in PID", "as FORMAT" and "at
// once" are said of what follows.
inline std::string logOf(const std::vector<std::string>& lines,
                         std::vector<std::string> formats = {"threadtime", "epoch"},
                         int64_t seconds = 1'000'000'000) {
    static const std::map<std::string, std::pair<std::string_view, std::string>> kWriters = {
            {"M", {kManagerTag, "INFOSYNC InfoSynchronizerManager.cpp:7 "}},
            {"E", {kEngineTag, "INFOSYNC InfoCollector.cpp:7 "}},
            {"m", {kManagerTag, ""}},
            {"e", {kEngineTag, ""}},
            {"O", {kOverlapTag, ""}},
            {"C", {kChattyTag, ""}}};
    std::string text;
    LogEntry entry{"", "", seconds * kSecond, 12, 34};
    int64_t step = 1'000'000;
    for (const std::string& line : lines) {
        const std::string what = line.substr(0, line.find(' '));
        const std::string rest = line.substr(std::min(line.size(), what.size() + 1));
        if (line.empty()) {
            text += '\n';
        } else if (what == "on" || what == "in") {
            (what == "on" ? entry.tid : entry.pid) = std::stoi(rest);
        } else if (what == "as") {
            formats = {rest};
        } else if (what == "at") {
            step = 0;
        } else {
            entry.tag = kWriters.at(what).first;
            entry.message = kWriters.at(what).second + rest;
            text += formatted(formats, entry);
            entry.at += step;
        }
    }
    return text;
}

// A text that comes in pieces.
class TextInput : public Input {
  public:
    explicit TextInput(std::string text, int64_t date = 0, size_t piece = SIZE_MAX)
        : Input("log", date), mText(std::move(text)), mPiece(piece) {}
    size_t read(char* buffer, size_t size) override {
        const size_t length = mText.copy(buffer, std::min(size, mPiece), mPosition);
        mPosition += length;
        return length;
    }

  private:
    std::string mText;
    size_t mPiece;
    size_t mPosition = 0;
};

// What views are given.
struct Seen {
    std::vector<view::Capture> captures;
    view::Session session;
};

class Keeper : public view::View {
  public:
    void add(const view::Capture& capture, const view::Session& /*session*/) override {
        seen.captures.push_back(capture);
    }
    void finish(const view::Session& session) override { seen.session = session; }

    Seen seen;
};

// Reads logs that were taken at `date`, which are called log1 and so on.
inline Seen readLogs(const std::vector<std::string>& logs, int64_t date = 0) {
    Keeper keeper;
    LogcatReader reader(keeper);
    for (size_t i = 0; i < logs.size(); ++i) {
        TextInput input(logs[i], date);
        reader.read(input, "log" + std::to_string(i + 1));
    }
    reader.finish();
    return keeper.seen;
}

// "kind subject@line: text", and so on, a line each.
inline std::string textOf(const std::vector<view::Finding>& findings) {
    std::string text;
    for (const view::Finding& finding : findings) {
        text += std::string("  ") + nameOf(finding.kind) + ' ' + finding.subject + '@' +
                std::to_string(finding.place.line) + ": " + finding.text +
                (finding.calls == 1 ? "\n" : "; " + std::to_string(finding.calls) + " calls\n");
    }
    return text;
}

inline std::string textOf(const view::Time& time) {
    return time ? std::to_string(*time / 1000000 % 1000000) : "-";
}

// A capture in short: its name, process and the last six digits of times in milliseconds, then its
// values, stages, nodes, reports, calls and findings.
inline std::string textOf(const view::Capture& capture) {
    std::string text = std::to_string(capture.number) + ' ' + capture.name + " in " +
                       capture.process + ": " +
                       (capture.isRegistered ? textOf(capture.registered) : "?") + ' ' +
                       (capture.isFlushed ? textOf(capture.flushed) : "?") + ' ' +
                       (capture.isRemoved ? textOf(capture.removed) : "?") + '\n';
    for (const view::Value& value : capture.values) {
        text += "  " + value.name + ' ' + value.text + '\n';
    }
    for (const view::Stage& stage : capture.stages.value_or(std::vector<view::Stage>())) {
        text += "  stage " + std::to_string(stage.number) + ' ' + stage.name +
                (stage.isKnown ? " at " + std::to_string(stage.ms) + '\n' : "\n");
    }
    for (const view::Node& node : capture.nodes) {
        const auto number = [](const std::optional<double>& time) {
            return time ? std::to_string(static_cast<int64_t>(*time)) : "-";
        };
        text += "  node " + node.name + ' ' + number(node.start) + ' ' + number(node.completion) +
                (node.isListed ? " listed\n" : "\n");
    }
    for (const view::Report& report : capture.reports) {
        text += "  report of " + std::to_string(report.events.size()) + " events\n";
    }
    for (const view::Call& call : capture.calls) {
        text += (call.hadEffect ? "  " : "  no effect: ") + call.operation + ' ' +
                std::to_string(call.tid) + '\n';
    }
    return text + textOf(capture.findings);
}

inline std::string textOf(const Seen& seen) {
    std::string text;
    for (const view::Capture& capture : seen.captures) {
        text += textOf(capture);
    }
    text += "session of " + std::to_string(seen.session.calls) + " calls, " +
            std::to_string(seen.session.flushes.value_or(99)) + " flushes\n";
    for (const auto& [name, state] : seen.session.switches) {
        text += "  " + name + ": " + state + '\n';
    }
    for (const std::string& note : seen.session.notes) {
        text += "  note: " + note + '\n';
    }
    return text + textOf(seen.session.findings);
}

}  // namespace logcat
