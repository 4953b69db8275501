#include "ServiceReport.h"

#include <cstdio>
#include <mutex>
#include <string>

#include <nlohmann/json.hpp>
#include <nlohmann/json_fwd.hpp>

#include "OverlapService.h"

namespace replay {
namespace {

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

}  // namespace

void ServiceReport::drain() {
    if (mTake == nullptr) {
        return;
    }
    std::lock_guard<std::mutex> lock(mMutex);
    mTake(&mTaken);
    for (const ServiceCall& call : mTaken) {
        add(call);
    }
    mTaken.clear();
}

void ServiceReport::add(const ServiceCall& call) {
    ++mCalls;
    mReports += call.kind == Kind::kFinishReport ? 1 : 0;
    if (mJson != nullptr) {
        write(mJson, jsonLine(call) + call.note);
    }
}

}  // namespace replay
