#include "ServiceReport.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>
#include <nlohmann/json_fwd.hpp>

#include "InfoSynchronizerManager.h"
#include "OverlapService.h"
#include "Printable.h"
#include "RequestRecord.h"
#include "RequestRecordQueue.h"

namespace replay {
namespace {

using camInfosync::InfoSynchronizerManager;
using camInfosync::RequestRecord;
using Kind = ServiceCall::Kind;

void write(std::FILE* file, const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), file);
}

std::string jsonLine(const ServiceCall& call) {
    using Json = nlohmann::ordered_json;
    Json line;
    switch (call.kind) {
        case Kind::kSetParam:
            line = Json{{"call", "setParam"},
                        {"id", call.id},
                        {"key", call.key},
                        {"value", call.value}};
            break;
        case Kind::kReportEvent:
            line = Json{{"call", "reportEvent"}, {"id", call.id}, {"event", call.value}};
            break;
        case Kind::kFinishReport:
            line = Json{{"call", "finishReport"},
                        {"id", call.id},
                        {"first", call.first},
                        {"second", call.second}};
            break;
    }
    return line.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
}

std::string padded(std::string text, size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

// A section of the report: lines under a heading. Nothing if there is no line.
class Section {
  public:
    explicit Section(std::string_view heading) : mHeading(heading) {}

    void add(std::string_view name, std::string_view value) {
        mLines.emplace_back(printable(name), printable(value));
        mWidth = std::max(mWidth, mLines.back().first.size());
    }
    std::string text() const {
        std::string text;
        for (const auto& [name, value] : mLines) {
            text += "    " + padded(name, mWidth) + "  " + value + '\n';
        }
        return text.empty() ? text : "  " + mHeading + '\n' + text;
    }

  private:
    std::string mHeading;
    std::vector<std::pair<std::string, std::string>> mLines;
    size_t mWidth = 0;
};

std::string parameters(const std::vector<ServiceCall>& report) {
    Section section("parameters");
    for (const ServiceCall& call : report) {
        if (call.kind == Kind::kSetParam) {
            section.add(call.key, call.value);
        }
    }
    return section.text();
}

std::string events(const std::vector<ServiceCall>& report) {
    Section section("events");
    size_t number = 0;
    for (const ServiceCall& call : report) {
        if (call.kind == Kind::kReportEvent) {
            section.add(std::to_string(++number), call.value);
        }
    }
    return section.text();
}

std::string closingCall(const ServiceCall& call) {
    return "  closed by finishReport(" + std::to_string(call.first) + ", " +
           std::to_string(call.second) + ")\n";
}

// What explains a report and is not sent with it.
std::string unsentPart(const RequestRecord& record) {
    constexpr double kTimedOut = -1.0;
    Section section("kept in the record, not sent");
    for (const std::string& error : record.errorInfo) {
        section.add("error", error);
    }
    for (const auto& [id, text] : record.snapshotInfo.vendorResultInfo) {
        section.add("vendor result " + std::to_string(id), text);
    }
    for (const auto& [node, state] : record.snapshotInfo.zuAlgoInfo.algoState) {
        section.add("state of " + node, state);
    }
    for (const auto& [node, time] : record.snapshotInfo.zuAlgoInfo.algoTimeB) {
        if (time == kTimedOut) {
            section.add("second time of " + node, "timed out");
        }
    }
    return section.text();
}

std::string unsentPart(InfoSynchronizerManager& manager, const std::string& id) {
    camInfosync::RequestRecordQueue& queue = *manager.mRequestRecordQueue;
    std::lock_guard<std::mutex> lock(queue.mutex);
    const auto record = queue.records.find(id);
    return record != queue.records.end() ? unsentPart(*record->second) : std::string();
}

}  // namespace

void ServiceReport::drain(InfoSynchronizerManager& manager) {
    if (mTake == nullptr) {
        return;
    }
    std::lock_guard<std::mutex> lock(mMutex);
    mTake(&mTaken);
    for (ServiceCall& call : mTaken) {
        add(std::move(call), manager);
    }
    mTaken.clear();
}

void ServiceReport::add(ServiceCall call, InfoSynchronizerManager& manager) {
    const bool closes = call.kind == Kind::kFinishReport;
    ++mCalls;
    mReports += closes ? 1 : 0;
    if (mJson != nullptr) {
        write(mJson, jsonLine(call));
    }
    if (mReadable == nullptr) {
        return;
    }
    mCurrent.push_back(std::move(call));
    if (closes) {
        const ServiceCall& last = mCurrent.back();
        const std::string name = last.id.empty() ? "(no name)" : printable(last.id);
        write(mReadable, "report " + std::to_string(mReports) + ": " + name + '\n' +
                                 parameters(mCurrent) + events(mCurrent) + closingCall(last) +
                                 unsentPart(manager, last.id) + '\n');
        mCurrent.clear();
    }
}

}  // namespace replay
