// Turns bytes into operations on a few images, with any texts and numbers, and compares the
// library with a model after each of them. The recorder stands in front of the library: what it
// has written of an operation is read back and played on a second queue, which must then hold the
// same.
//
// A few bytes select an image and an operation (Trial::run), the next ones draw the
// operation's arguments, until no bytes are left. A value that the library only has to store is
// drawn into the model's record and given to the library from there (Trial::update).

#include <android/log.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <iterator>
#include <sstream>
#include <utility>

#include <zudebug/Log.h>

#include "CaptureLog.h"
#include "Check.h"
#include "InfoSynchronizerManager.h"
#include "RecordModel.h"
#include "Recording.h"
#include "Source.h"

namespace fuzz {

using namespace camInfosync;  // NOLINT(google-build-using-namespace)
using Manager = InfoSynchronizerManager;

// Lists the calls that it receives, and throws a Call from one of them if told so.
class Service final : public doubles::CallService {
  public:
    std::string answerTo(const std::string& key) override {
        return key == kSwitch ? mAnswer : key + mAnswer;
    }

    std::vector<Call> mReceived;
    size_t mLastCall = SIZE_MAX;  // the call that throws
    std::string mAnswer = "enabled";

  private:
    void receive(const Call& call) override {
        mReceived.push_back(call);
        if (mReceived.size() == mLastCall) {
            throw call;
        }
    }
};

// One input: what it does, and what must come of it.
class Trial {
  public:
    Trial(const uint8_t* bytes, size_t size) : mSource(bytes, size), mPlays(size % 4 == 0) {
        InfoSynchronizer::mIntentAwareImpl = &mService;
        clockTime = {};
        mManager.mRequestRecordQueue = std::make_shared<RequestRecordQueue>();
        mManager.mSynchronizers[INFO_SYNC_TYPE_CMD] =
                std::make_shared<CmdExecutor>(INFO_SYNC_TYPE_CMD);
        // One record exists from the beginning, and is found by its key and by its frame's name.
        mManager.registerSnapshotRequestRecord(mName);
        mRecords.try_emplace(mName, newRecord());
        playRecording();
        mService.mReceived.clear();
    }

    void run() {
        static constexpr void (Trial::*kOperations[])() = {
                &Trial::changeSurroundings, &Trial::addOrRemove, &Trial::flush,
                &Trial::requestReport,      &Trial::ask,         &Trial::frame,
                &Trial::storeValues,        &Trial::storeValues, &Trial::vendorResult,
                &Trial::algorithms,         &Trial::error,       &Trial::stages,
                &Trial::nodeTimes,          &Trial::nodeStates,
        };
        while (mSource.remaining_bytes() > 0) {
            ++clockTime.tv_sec;
            mName = mSource.pick(4) == 0 ? mSource.any(kNames) : mName;
            (this->*mSource.any(kOperations))();
            FUZZ_CHECK(mService.mReceived.empty());
            compare(*mManager.mRequestRecordQueue);
            if (mPlays) {
                playRecording();
                FUZZ_CHECK(std::exchange(mService.mReceived, {}) == std::exchange(mServed, {}));
                compare(*mPlayed);
            }
        }
        takeRecording();                             // of what was not played
        for (const auto& [text, copy] : mAnswers) {  // none is overwritten or freed
            FUZZ_CHECK(text == copy);
        }
    }

  private:
    void compare(RequestRecordQueue& queue) {
        FUZZ_CHECK(queue.mutex.try_lock());
        FUZZ_CHECK(queue.records.size() == mRecords.size());
        FUZZ_CHECK(queue.errorImageNames == mFailed);
        FUZZ_CHECK(queue.postProcInfo == mPostProc);
        for (const auto& [name, record] : queue.records) {
            FUZZ_CHECK(contentOf(*record) == contentOf(mRecords.at(name)));
        }
        queue.mutex.unlock();
    }

    // Plays what was recorded of the last operation, before the same service.
    void playRecording() {
        std::istringstream lines(takeRecording());
        mService.mReceived.clear();
        std::swap(mManager.mRequestRecordQueue, mPlayed);
        for (std::string line; std::getline(lines, line);) {
            if (line.rfind("{\"n\"", 0) != 0) {
                continue;  // the header
            }
            std::vector<replay::LineError> errors;
            const replay::CaptureStep step =
                    replay::readCaptureLine(line, "", errors, replay::LineRules::kUnderHeader);
            FUZZ_CHECK(errors.empty());
            try {
                step.run(mManager);
            } catch (const Call&) {
            }
        }
        std::swap(mManager.mRequestRecordQueue, mPlayed);
        takeRecording();
    }

    // The model's record that an update changes; without one, a record that nobody looks at.
    RequestRecord& found(bool byFrame = false) {
        for (auto& [key, record] : mRecords) {
            if ((byFrame ? record.frameInfo.imageName : key) == mName) {
                return record;
            }
        }
        return mNobody = newRecord();
    }

    // Draws the arguments, and updates with them.
    template <typename... Arguments>
    void update(void (Manager::*operation)(std::string, Arguments...), Arguments&... arguments) {
        mSource.draw(arguments...);
        (mManager.*operation)(mName, arguments...);
    }

    void failIf(bool condition, RequestRecord& record, const char* text) {
        if (condition && &record != &mNobody) {
            record.hasError = true;
            record.errorInfo.emplace_back(text);
            mFailed.push_back(mName);
        }
    }

    bool isServed() const { return InfoSynchronizer::mIntentAwareImpl != nullptr; }
    // What comes after a zero byte does not count.
    bool isOn() const {
        const std::string& answer = mService.mAnswer;
        return isServed() && answer.substr(0, answer.find('\0')) == "enabled";
    }

    // Runs an operation that makes these calls to the service, which throws from one of them or
    // from none. Returns whether the operation came to its end.
    template <typename Operation>
    bool serve(std::vector<Call> calls, Operation operation) {
        calls.resize(isServed() ? calls.size() : 0);
        mService.mLastCall = mSource.coin() ? 1 + mSource.pick(24) : SIZE_MAX;
        bool threw = false;
        try {
            operation();
        } catch (const Call&) {
            threw = true;
        }
        FUZZ_CHECK(threw == (mService.mLastCall <= calls.size()));
        calls.resize(std::min(calls.size(), mService.mLastCall));
        FUZZ_CHECK(mService.mReceived == calls);
        mServed = std::exchange(mService.mReceived, {});
        return !threw;
    }

    // The clock goes backwards too, and by more than 32 bits of milliseconds.
    void changeSurroundings() {
        int32_t seconds = 0;
        mSource.draw(seconds, mService.mAnswer);
        clockTime = {seconds + (int64_t{1} << 31), mSource.ConsumeIntegralInRange(0, 999999999)};
        const int kind = mSource.range(0, 15);
        if (kind < 11) {
            mService.mAnswer = kind < 9 ? "enabled" : "enabled" + mService.mAnswer;
        }
        InfoSynchronizer::mIntentAwareImpl = kind == 15 ? nullptr : &mService;
        zudebug::gZuCamLogLevel = kind == 0 ? ANDROID_LOG_FATAL : ANDROID_LOG_INFO;
    }

    void addOrRemove() {
        const bool adds = mSource.pick(4) != 0;
        const auto operation = adds ? &Manager::registerSnapshotRequestRecord
                                    : &Manager::unregisterSnapshotRequestRecord;
        const auto run = [&] { (mManager.*operation)(mName); };
        const bool worked = serve({{"queryValue", kSwitch}}, run) && isOn();
        if (worked && adds) {
            mRecords.try_emplace(mName, newRecord());
        } else if (worked) {
            mRecords.erase(mName);
        }
    }

    void flush() {
        const auto type = static_cast<InfoSyncType>(mSource.range(-1, 3));
        std::vector<Call> calls{{"queryValue", kSwitch}};
        if (isOn() && type == 0 && mRecords.count(mName) != 0) {
            const std::vector<Call> report = reportOn(mRecords.at(mName));
            calls.insert(calls.end(), report.begin(), report.end());
        }
        serve(calls, [&] { mManager.snapshotRequestInfoFlush(mName, type); });
    }

    void requestReport() {
        const auto type = static_cast<InfoSyncType>(2 * mSource.range(-1, 2));
        const auto& records = mManager.mRequestRecordQueue->records;
        const void* in = mRecords.count(mName) != 0 ? records.at(mName).get() : nullptr;
        const bool reports = in != nullptr && (type == 0 || type == 2);
        void* out = this;
        serve(reports ? reportOn(mRecords.at(mName)) : std::vector<Call>(),
              [&] { mManager.request(type, in, &out); });
        FUZZ_CHECK(out == this);
    }

    void ask() {
        const char* key = mSource.coin() ? kSwitch.c_str() : mName.c_str();
        void* out = this;
        const auto run = [&] { mManager.request(INFO_SYNC_TYPE_CMD, key, &out); };
        if (!serve({{"queryValue", key}}, run)) {
            FUZZ_CHECK(out == this);
            return;
        }
        const std::string answer = isServed() ? mService.answerTo(key) : "";
        mAnswers.emplace_back(static_cast<char*>(out), answer.c_str());
        mManager.request(INFO_SYNC_TYPE_CMD, key, nullptr);
        mManager.request(INFO_SYNC_TYPE_CMD, nullptr, &out);
        FUZZ_CHECK(out == nullptr);
    }

    void frame() {
        FrameInfo& info = found().frameInfo;
        std::vector<uint32_t> cameras;
        update(&Manager::updateFrameInfo, info.frameNumber, info.timestamp, cameras,
               info.frameExtra);
        info.camIds.insert(info.camIds.end(), cameras.begin(), cameras.end());
        info.imageName = mName;
    }

    void storeValues() {
        SnapshotInfo& info = found().snapshotInfo;
        auto& [a, b, anchor, flag, wide, ids, expected] = info.requestInfo;
        auto& [list, timesA, timesB, timesC, states] = info.zuAlgoInfo;
        switch (mSource.range(0, 6)) {
            case 0:
                return update(&Manager::updateRequestInfo, a, b, flag, wide, ids, expected);
            case 1:
                return update(&Manager::updateUIInfo, info.requestType, info.camMode,
                              info.faceDetect, info.zoomRatio, info.uiExtra);
            case 2:
                return update(&Manager::updateAnchor3aInfo, info.fstop, info.iso, info.lux,
                              info.exposureTime);
            case 3:
                return update(&Manager::updateAnchorFrame, anchor);
            case 4:
                return update(&Manager::updateVndResultInfo, info.vendorResultInfo);
            case 5:
                mSource.draw(list, timesA, timesB, timesC, states);
                return mManager.updateZuAlgoInfo(mName, info.zuAlgoInfo);
            default:
                mSource.draw(mPostProc);
                mManager.updatePostProcInfo(mPostProc);
        }
    }

    void vendorResult() {
        RequestRecord& record = found();
        uint32_t id = 0;
        int32_t code = 0;
        update(&Manager::updateVndResultInfo, id, code);
        if (code < 0 || code > 4) {
            return;
        }
        auto& results = record.snapshotInfo.vendorResultInfo;
        const auto& expected = record.snapshotInfo.requestInfo.expectedResultIds;
        if (results.size() < expected.size()) {
            for (const int32_t missing : expected) {
                results[missing] = "not_return";
            }
        }
        results[static_cast<int32_t>(id)] = ResultErrorCodeToChar[code];
        failIf(code != 0, record, "vendor result error");
    }

    void algorithms() {
        SnapshotInfo::ZuAlgoInfo& info = found(true).snapshotInfo.zuAlgoInfo;
        update(&Manager::updateZuAlgoInfo, info.algoList);
        for (const std::string& entry : info.algoList) {
            const std::string key(entry.begin(), std::find(entry.begin(), entry.end(), ':'));
            info.algoTimeA.insert({key, 0.0});
            info.algoTimeB.insert({key, 0.0});
            info.algoState.insert({key, "none"});
        }
    }

    void error() {
        RequestRecord& record = found();
        std::string text;
        mSource.draw(text);
        const char* given = mSource.coin() ? text.c_str() : nullptr;
        mManager.updateSnapshotErrorInfo(mName, given);
        if (given != nullptr) {
            record.hasError = true;
            record.errorInfo.emplace_back(given);
        }
    }

    // One stage of now, and then ready values.
    void stages() {
        RequestRecord& record = found();
        uint32_t now = 0;
        update(&Manager::updateSnapshotTimeInfo, now);
        if (now < std::size(TimeStageToChar)) {
            stamp(record, now);
        }
        std::map<std::string, int64_t> times;
        update(&Manager::updateSnapshotTimeInfo, times);
        for (const char* stage : TimeStageToChar) {
            if (times.count(stage) != 0) {
                record.snapshotInfo.timeInfo[stage] = times[stage];
            }
        }
    }

    void nodeTimes() {
        RequestRecord& record = found(true);
        auto& [list, timesA, timesB, timesC, states] = record.snapshotInfo.zuAlgoInfo;
        std::string node;
        mSource.draw(node);
        mSource.draw(timesA[node], timesB[node], timesC[node]);
        mManager.updateNodeProcTime(mName, node, timesA[node], timesB[node], timesC[node]);
        failIf(timesB[node] == -1.0, record, "node process time out");
    }

    // One state by its code, and then ready texts.
    void nodeStates() {
        RequestRecord& record = found(true);
        std::map<std::string, std::string>& stored = record.snapshotInfo.zuAlgoInfo.algoState;
        std::string node;
        int32_t state = 0;
        update(&Manager::updateNodeProcState, node, state);
        if (state >= 0 && state < 5) {
            stored[node] = NodeProcInfoToChar[state];
            failIf(state != 0, record, "node process error");
        }
        std::map<std::string, std::string> states;
        update(&Manager::updateNodeProcState, states);
        states.merge(stored);  // those given come first
        stored = states;
    }

    Source mSource;
    Service mService;
    Manager& mManager = Manager::getInstance();
    std::shared_ptr<RequestRecordQueue> mPlayed = std::make_shared<RequestRecordQueue>();
    const bool mPlays;          // not for all inputs: playing takes most of the time
    std::vector<Call> mServed;  // what the operation's calls to the service were
    std::string mName;          // the image that the operation is about
    std::map<std::string, RequestRecord> mRecords;
    RequestRecord mNobody = newRecord();
    std::vector<std::string> mFailed;
    std::map<std::string, uint32_t> mPostProc;
    std::vector<std::pair<const char*, std::string>> mAnswers;  // as they came, and copies
};

}  // namespace fuzz

// What the library binds to: the log, which formats each line and prints none, and the clock.
extern "C" int __android_log_print(int /*priority*/, const char* /*tag*/, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    FUZZ_CHECK(std::vsnprintf(nullptr, 0, format, arguments) >= 0);
    va_end(arguments);
    return 1;
}

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
    if (clock != CLOCK_MONOTONIC) {
        return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    }
    *time = fuzz::clockTime;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    fuzz::Trial(bytes, size).run();
    return 0;
}
