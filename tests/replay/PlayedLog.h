// Plays logs for tests, and keeps what a view is given.

#pragma once

#include <dlfcn.h>
#include <unistd.h>  // getpid

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Capture.h"
#include "CaptureObserver.h"
#include "Finding.h"
#include "InfoSynchronizerManager.h"
#include "LogCheck.h"
#include "ObservedPlayback.h"
#include "OverlapService.h"
#include "Progress.h"
#include "ReplayOptions.h"
#include "StepReader.h"
#include "View.h"

namespace played {

struct Shown {
    // "LINE KIND TEXT" of each finding, in the order of the lines.
    std::vector<std::string> findings() const {
        std::vector<view::Finding> all = session.findings;
        for (const view::Capture& capture : captures) {
            all.insert(all.end(), capture.findings.begin(), capture.findings.end());
        }
        std::stable_sort(all.begin(), all.end(), [](const auto& left, const auto& right) {
            return std::tie(left.place.line, left.kind) < std::tie(right.place.line, right.kind);
        });
        std::vector<std::string> texts(all.size());
        std::transform(all.begin(), all.end(), texts.begin(), [](const view::Finding& finding) {
            return std::to_string(finding.place.line) + ' ' + view::nameOf(finding.kind) + ' ' +
                   finding.text;
        });
        return texts;
    }

    std::vector<view::Capture> captures;
    view::Session session;
};

class Keeper final : public view::View {
  public:
    explicit Keeper(Shown& shown) : mShown(shown) {}
    void add(const view::Capture& capture, const view::Session& /*session*/) override {
        mShown.captures.push_back(capture);
    }
    void finish(const view::Session& session) override { mShown.session = session; }

  private:
    Shown& mShown;
};

using Lines = std::vector<std::string>;

// A line of the log. `fields` are JSON members.
inline std::string call(const std::string& operation, const std::string& image,
                        const std::string& fields = {}) {
    return R"({"call":")" + operation + R"(","image":")" + image + '"' +
           (fields.empty() ? "" : ',' + fields) + '}';
}

// What the names of operations are short for in `line`.
struct ShortCall {
    const char* name;
    const char* operation;
    const char* fields;
};

// A line written as "WHAT IMAGE FIELDS", where the fields come instead of the usual ones.
inline std::string lineOf(const std::string& text) {
    static constexpr ShortCall kCalls[] = {
            {"register", "registerSnapshotRequestRecord", ""},
            {"unregister", "unregisterSnapshotRequestRecord", ""},
            {"flush", "snapshotRequestInfoFlush", ""},
            {"frame", "updateFrameInfo",
             R"("frameNumber":1,"timestamp":"1","camIds":[0],"frameExtra":0)"},
            {"3a", "updateAnchor3aInfo", R"("fstop":0,"iso":5,"lux":0,"exposureTime":0)"},
            {"ui", "updateUIInfo",
             R"("requestType":1,"camMode":4,"faceDetect":0,"zoomRatio":1,"uiExtra":"")"},
            {"anchor", "updateAnchorFrame", R"("anchorFrame":1)"},
            {"expect", "updateRequestInfo", ""},
            {"result", "updateVndResultInfo", R"("resultId":1,"errorCode":0)"},
            {"algo", "updateZuAlgoInfo", R"("algoList":["hdr","tone"])"},
            {"error", "updateSnapshotErrorInfo", R"("text":"it broke")"},
            {"stage", "updateSnapshotTimeInfo", R"("stage":1)"},
            {"node", "updateNodeProcTime", R"("node":"hdr","first":5,"second":6,"third":9)"},
            {"state", "updateNodeProcState", R"("node":"hdr","state":0)"},
    };
    if (text.front() == '{') {
        return text;
    }
    const size_t image = text.find(' ') + 1;
    const size_t fields = std::min(text.find(' ', image), text.size());
    const auto* known = std::find_if(std::begin(kCalls), std::end(kCalls), [&](const auto& each) {
        return text.substr(0, image - 1) == each.name;
    });
    std::string given = text.substr(std::min(fields + 1, text.size()));
    if (std::string(known->name) == "expect") {
        given = R"("reqValueA":0,"reqValueB":0,"reqFlag":false,"reqValue64":0,"reqIdsA":[],)"
                R"("expectedResultIds":)" +
                given;
    } else if (given.empty() || given.find(R"("thread")") == 0 || given.find(R"("at")") == 0) {
        given = known->fields + std::string(*known->fields != 0 && !given.empty() ? "," : "") +
                given;
    }
    return call(known->operation, text.substr(image, fields - image), given);
}

// Shows the service's calls to `also` after the observer.
inline void showTo(const WatchCall& also) {
    auto* const service = dlopen(kOverlapServicePath, RTLD_NOW | RTLD_NOLOAD);
    reinterpret_cast<SetWatch*>(dlsym(service, kSetWatch))([also](ServiceCall& call) {
        replay::CaptureObserver::watch(call);
        also(call);
    });
}

// Plays a log, and leaves a library that holds nothing.
inline Shown play(const Lines& lines, ReplayOptions options = {}, const WatchCall& also = {}) {
    options.path = testing::TempDir() + "played-" + std::to_string(getpid()) + ".jsonl";
    std::ofstream file(options.path);
    for (const std::string& line : lines) {
        file << lineOf(line) << '\n';
    }
    file.close();
    replay::LogFile log(options.path);
    options.log = &log;
    EXPECT_TRUE(replay::readHeader(log, options.header));
    replay::StepReader reader(log, options.header);
    replay::Progress noProgress(false, 0);
    const auto facts = replay::checkLog(reader, options, noProgress);
    Shown shown;
    Keeper keeper(shown);
    if (facts) {
        // On the heap: where one on the stack was, ThreadSanitizer takes another's mutex for its
        // own.
        const auto playback = std::make_unique<replay::ObservedPlayback>(reader, *facts, options,
                                                                         nullptr, &keeper);
        if (also) {
            showTo(also);
        }
        playback->play(noProgress);
        playback->finish();
    } else {
        ADD_FAILURE() << "the log is wrong";
    }
    auto& queue = *camInfosync::InfoSynchronizerManager::getInstance().mRequestRecordQueue;
    queue.records.clear();
    queue.errorImageNames.clear();
    return shown;
}

}  // namespace played
