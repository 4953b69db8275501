// A stand-in for the overlap library: its service answers every command as it was told to, or with
// the environment's INFOSYNC_HOST_ANSWER ("enabled" if unset), and keeps the calls that it
// receives. INFOSYNC_HOST_CALLS names a file to write each of them to.

#include "OverlapService.h"

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <mutex>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "IntentAwareSys.h"
#include "OverlapClientTmpl.h"
#include "ServiceBase.h"

namespace {

class RecordingService final : public ServiceBase {
  public:
    void setParam(const std::string& id, const std::string& key,
                  const std::string& value) override {
        keep({ServiceCall::Kind::kSetParam, id, key, value, 0, 0, {}},
             "setParam\t" + id + '\t' + key + '\t' + value);
    }
    void reportEvent(const std::string& id, const std::string& event) override {
        keep({ServiceCall::Kind::kReportEvent, id, {}, event, 0, 0, {}},
             "reportEvent\t" + id + '\t' + event);
    }
    void finishReport(std::string id, int32_t first, int32_t second) override {
        keep({ServiceCall::Kind::kFinishReport, id, {}, {}, first, second, {}},
             "finishReport\t" + id + '\t' + std::to_string(first) + '\t' + std::to_string(second));
    }
    std::string queryValue(std::string key) override {
        if (mAnswer) {
            return mAnswer(key);
        }
        const char* answer = std::getenv("INFOSYNC_HOST_ANSWER");
        return answer != nullptr ? answer : "enabled";
    }

    void setAnswers(AnswerQuestion answer) { mAnswer = std::move(answer); }
    void setWatch(WatchCall watch) { mWatch = std::move(watch); }
    void take(std::vector<ServiceCall>* calls) {
        std::lock_guard<std::mutex> lock(mMutex);
        calls->insert(calls->end(), std::make_move_iterator(mCalls.begin()),
                      std::make_move_iterator(mCalls.end()));
        mCalls.clear();
    }

  private:
    static std::ofstream openFile() {
        const char* path = std::getenv("INFOSYNC_HOST_CALLS");
        return path != nullptr ? std::ofstream(path) : std::ofstream();
    }

    void keep(ServiceCall call, const std::string& line) {
        if (mWatch) {
            mWatch(call);
        }
        std::lock_guard<std::mutex> lock(mMutex);
        mCalls.push_back(std::move(call));
        if (mFile.is_open()) {
            mFile << line << '\n' << std::flush;
        }
    }

    AnswerQuestion mAnswer;
    WatchCall mWatch;
    std::mutex mMutex;
    std::vector<ServiceCall> mCalls;   // guarded by mMutex
    std::ofstream mFile = openFile();  // guarded by mMutex
};

RecordingService& service() {
    static RecordingService service;
    return service;
}

}  // namespace

extern "C" {

zu_hal_overlap::OverlapEntry GetInstance;

OverlapInstance* GetInstance(zu_hal_overlap::OverlapOptions* /*options*/) {
    static ServiceInstance instance(&service());
    return &instance;
}

void infosyncTakeServiceCalls(std::vector<ServiceCall>* calls) {
    service().take(calls);
}

void infosyncSetAnswers(AnswerQuestion answer) {
    service().setAnswers(std::move(answer));
}

void infosyncSetWatch(WatchCall watch) {
    service().setWatch(std::move(watch));
}

}  // extern "C"
