// Turns bytes into operations on a few images, with any texts and numbers, and compares the
// library with the model after each of them.

#include <android/log.h>
#include <time.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <fuzzer/FuzzedDataProvider.h>
#include <zudebug/Log.h>

#include "Check.h"
#include "InfoSynchronizerManager.h"
#include "RecordModel.h"
#include "ServiceBase.h"

namespace {

using camInfosync::InfoSynchronizer;
using camInfosync::InfoSynchronizerManager;
using camInfosync::RequestRecordQueue;
using camInfosync::SnapshotInfo;
using fuzz::ModelRecord;

const std::string kNames[] = {"", "a", "b", "%s%n\"\\", std::string("z\0z", 3)};

struct ServiceError {};

// Lists the calls that it receives, and throws from one of them if told so.
class Service final : public ServiceBase {
  public:
    void setParam(const std::string& id, const std::string& key,
                  const std::string& value) override {
        receive(fuzz::paramCall(id, key, value));
    }
    void reportEvent(const std::string& id, const std::string& event) override {
        receive(fuzz::eventCall(id, event));
    }
    void finishReport(std::string id, int32_t first, int32_t second) override {
        receive(fuzz::finishCall(id, first, second));
    }
    std::string queryValue(std::string key) override {
        if (mThrowFromQuery) {
            throw ServiceError();
        }
        return key == "snapshotInfoCollectEnable" ? mAnswer : key;
    }

    std::vector<std::string> mReceived;
    size_t mLastCall = SIZE_MAX;  // the call that throws
    bool mThrowFromQuery = false;
    std::string mAnswer = "enabled";

  private:
    void receive(std::string call) {
        mReceived.push_back(std::move(call));
        if (mReceived.size() == mLastCall) {
            throw ServiceError();
        }
    }
};

Service& service() {
    static auto& service = *new Service;
    return service;
}

// One input: what it does, and what must come of it.
class Trial {
  public:
    Trial(const uint8_t* bytes, size_t size) : mData(bytes, size) {
        InfoSynchronizer::mIntentAwareImpl = &service();
        zudebug::gZuCamLogLevel = ANDROID_LOG_INFO;
        service().mAnswer = "enabled";
    }
    ~Trial() {
        queue().records.clear();
        queue().errorImageNames.clear();
        queue().postProcInfo.clear();
    }
    Trial(const Trial&) = delete;
    Trial& operator=(const Trial&) = delete;

    void run() {
        while (mData.remaining_bytes() > 0) {
            step();
            compare();
        }
    }

  private:
    using Step = void (Trial::*)();

    static InfoSynchronizerManager& manager() { return InfoSynchronizerManager::getInstance(); }
    static RequestRecordQueue& queue() { return *manager().mRequestRecordQueue; }

    template <typename Number>
    Number number() {
        return mData.ConsumeIntegral<Number>();
    }
    // Any bits, so that NaN, infinities and subnormals come up as well as everyday values.
    template <typename Float, typename Bits>
    Float anyFloat() {
        if (mData.ConsumeBool()) {
            return static_cast<Float>(number<int8_t>()) / 2;
        }
        const Bits bits = number<Bits>();
        Float value = 0;
        std::memcpy(&value, &bits, sizeof(value));
        return value;
    }
    float anyFloat32() { return anyFloat<float, uint32_t>(); }
    double anyDouble() { return anyFloat<double, uint64_t>(); }
    std::string text() { return mData.ConsumeRandomLengthString(300); }
    std::string name() { return mData.PickValueInArray(kNames); }
    template <typename Element, typename Make>
    std::vector<Element> list(Make make) {
        std::vector<Element> result;
        for (int i = mData.ConsumeIntegralInRange(0, 5); i > 0; --i) {
            result.push_back(make());
        }
        return result;
    }
    template <typename Key, typename Value, typename MakeKey, typename MakeValue>
    std::map<Key, Value> dictionary(MakeKey makeKey, MakeValue makeValue) {
        std::map<Key, Value> result;
        for (int i = mData.ConsumeIntegralInRange(0, 4); i > 0; --i) {
            Key key = makeKey();
            result[std::move(key)] = makeValue();
        }
        return result;
    }
    // Few different ones, so that they meet again.
    int32_t id() {
        return mData.ConsumeBool() ? mData.ConsumeIntegralInRange(-1, 3) : number<int32_t>();
    }
    // Mostly one of those that others depend on.
    uint32_t someStage() {
        static constexpr uint32_t kStages[] = {3, 4, 6, 13};
        return mData.ConsumeBool()   ? mData.PickValueInArray(kStages)
               : mData.ConsumeBool() ? mData.ConsumeIntegralInRange(0U, 15U)
                                     : number<uint32_t>();
    }
    std::vector<int32_t> ids() {
        return list<int32_t>([this] { return id(); });
    }

    bool isOn() const { return std::strcmp(service().mAnswer.c_str(), "enabled") == 0; }
    ModelRecord* find(const std::string& name) {
        const auto position = mRecords.find(name);
        return position != mRecords.end() ? &position->second : nullptr;
    }
    ModelRecord* findByFrame(const std::string& name) {
        for (auto& [key, record] : mRecords) {
            if (record.frameName == name) {
                return &record;
            }
        }
        return nullptr;
    }
    void markFailed(ModelRecord& record, const std::string& name, const char* text) {
        record.errors.emplace_back(text);
        mFailed.push_back(name);
    }

    void step();
    void compare();
    void expectReport(std::vector<std::string> calls, bool threw);

    static double ageMs(const std::string& image);

    void answer();
    void registerImage();
    void unregisterImage();
    void flush();
    void request();
    void frame();
    void requestInfo();
    void ui();
    void anchor();
    void vendorResult();
    void vendorResults();
    void algorithms();
    void algorithmInfo();
    void error();
    void postProc();
    void stage();
    void stages();
    void nodeTime();
    void nodeState();
    void nodeStates();

    FuzzedDataProvider mData;
    std::map<std::string, ModelRecord> mRecords;
    std::vector<std::string> mFailed;
    std::map<std::string, uint32_t> mPostProc;
};

void Trial::step() {
    static constexpr Step kSteps[] = {
            &Trial::answer,          &Trial::registerImage,
            &Trial::unregisterImage, &Trial::flush,
            &Trial::request,         &Trial::frame,
            &Trial::requestInfo,     &Trial::ui,
            &Trial::anchor,          &Trial::vendorResult,
            &Trial::vendorResults,   &Trial::algorithms,
            &Trial::algorithmInfo,   &Trial::error,
            &Trial::postProc,        &Trial::stage,
            &Trial::stages,          &Trial::nodeTime,
            &Trial::nodeState,       &Trial::nodeStates,
    };
    (this->*mData.PickValueInArray(kSteps))();
}

void Trial::compare() {
    FUZZ_CHECK(queue().mutex.try_lock());
    FUZZ_CHECK(queue().records.size() == mRecords.size());
    auto model = mRecords.begin();
    for (const auto& [name, record] : queue().records) {
        FUZZ_CHECK(name == model->first);
        model->second.compare(*record);
        ++model;
    }
    FUZZ_CHECK(queue().errorImageNames == mFailed);
    FUZZ_CHECK(queue().postProcInfo == mPostProc);
    FUZZ_CHECK(service().mReceived.empty());
    queue().mutex.unlock();
}

void Trial::answer() {
    service().mAnswer = mData.ConsumeBool() ? "enabled" : text();
    service().mThrowFromQuery = number<uint8_t>() == 0;
    if (service().mThrowFromQuery) {
        const auto tries = {&InfoSynchronizerManager::registerSnapshotRequestRecord,
                            &InfoSynchronizerManager::unregisterSnapshotRequestRecord};
        for (const auto operation : tries) {
            try {
                (manager().*operation)(name());
                FUZZ_CHECK(!"it throws");
            } catch (const ServiceError&) {
            }
        }
        service().mThrowFromQuery = false;
    }
}

void Trial::registerImage() {
    const std::string image = name();
    manager().registerSnapshotRequestRecord(image);
    if (isOn()) {
        mRecords.try_emplace(image);
    }
}

void Trial::unregisterImage() {
    const std::string image = name();
    manager().unregisterSnapshotRequestRecord(image);
    if (isOn()) {
        mRecords.erase(image);
    }
}

void Trial::expectReport(std::vector<std::string> calls, bool threw) {
    FUZZ_CHECK(threw == (service().mLastCall <= calls.size()));
    calls.resize(std::min(calls.size(), service().mLastCall));
    FUZZ_CHECK(service().mReceived == calls);
    service().mReceived.clear();
    service().mLastCall = SIZE_MAX;
}

void Trial::flush() {
    const std::string image = name();
    const auto type = static_cast<camInfosync::InfoSyncType>(mData.ConsumeIntegralInRange(-1, 3));
    service().mLastCall = mData.ConsumeBool() ? number<uint8_t>() % 20 + 1 : SIZE_MAX;
    bool threw = false;
    try {
        manager().snapshotRequestInfoFlush(image, type);
    } catch (const ServiceError&) {
        threw = true;
    }
    const ModelRecord* record = isOn() && type == 0 ? find(image) : nullptr;
    expectReport(record != nullptr ? record->report() : std::vector<std::string>(), threw);
}

void Trial::request() {
    const auto type = static_cast<camInfosync::InfoSyncType>(number<int8_t>() % 5);
    const std::string image = name();
    if (type == camInfosync::INFO_SYNC_TYPE_CMD) {
        void* out = nullptr;
        manager().request(type, image.c_str(), &out);
        FUZZ_CHECK(std::strcmp(static_cast<const char*>(out), image.c_str()) == 0);
        return;
    }
    const auto position = queue().records.find(image);
    void* out = &service();
    manager().request(type, position != queue().records.end() ? position->second.get() : nullptr,
                      &out);
    FUZZ_CHECK(out == &service());
    const bool reports = (type == 0 || type == 2) && find(image) != nullptr;
    expectReport(reports ? find(image)->report() : std::vector<std::string>(), false);
}

void Trial::frame() {
    const std::string image = name();
    const auto frameNumber = number<uint32_t>();
    const std::string timestamp = text();
    const auto cameras = list<uint32_t>([this] { return number<uint32_t>(); });
    const auto extra = number<uint32_t>();
    manager().updateFrameInfo(image, frameNumber, timestamp, cameras, extra);
    if (ModelRecord* record = find(image); record != nullptr) {
        record->frameNumber = frameNumber;
        record->timestamp = timestamp;
        record->cameras.insert(record->cameras.end(), cameras.begin(), cameras.end());
        record->frameExtra = extra;
        record->frameName = image;
    }
}

void Trial::requestInfo() {
    const std::string image = name();
    const auto a = number<int32_t>();
    const auto b = number<int32_t>();
    const bool flag = mData.ConsumeBool();
    const auto wide = number<uint64_t>();
    const auto idsA = ids();
    const auto expectedIds = ids();
    manager().updateRequestInfo(image, a, b, flag, wide, idsA, expectedIds);
    if (ModelRecord* record = find(image); record != nullptr) {
        record->requestA = a;
        record->requestB = b;
        record->requestFlag = flag;
        record->request64 = wide;
        record->idsA = idsA;
        record->expectedIds = expectedIds;
    }
}

void Trial::ui() {
    const std::string image = name();
    const auto type = number<int32_t>();
    const auto mode = number<uint32_t>();
    const auto face = number<int32_t>();
    const float zoom = anyFloat32();
    const std::string extra = text();
    manager().updateUIInfo(image, static_cast<camInfosync::RequestType>(type), mode, face, zoom,
                           extra);
    if (ModelRecord* record = find(image); record != nullptr) {
        record->requestType = type;
        record->camMode = mode;
        record->faceDetect = face;
        record->zoom = zoom;
        record->uiExtra = extra;
    }
}

void Trial::anchor() {
    const std::string image = name();
    const auto anchorFrame = number<int32_t>();
    const float fstop = anyFloat32();
    const float lux = anyFloat32();
    const auto iso = number<int32_t>();
    const auto exposure = number<int64_t>();
    manager().updateAnchorFrame(image, anchorFrame);
    manager().updateAnchor3aInfo(image, fstop, iso, lux, exposure);
    if (ModelRecord* record = find(image); record != nullptr) {
        record->anchorFrame = anchorFrame;
        record->fstop = fstop;
        record->lux = lux;
        record->iso = iso;
        record->exposure = exposure;
    }
}

void Trial::vendorResult() {
    const std::string image = name();
    const int32_t id = this->id();
    const int32_t code = mData.ConsumeBool() ? number<int32_t>() : number<int8_t>() % 6;
    manager().updateVndResultInfo(image, static_cast<uint32_t>(id), code);
    ModelRecord* record = find(image);
    if (record == nullptr || fuzz::resultText(code).empty()) {
        return;
    }
    if (record->results.size() < record->expectedIds.size()) {
        for (const int32_t expected : record->expectedIds) {
            record->results[expected] = "not_return";
        }
    }
    record->results[id] = fuzz::resultText(code);
    if (code != 0) {
        markFailed(*record, image, "vendor result error");
    }
}

void Trial::vendorResults() {
    const std::string image = name();
    const auto results =
            dictionary<int32_t, std::string>([this] { return id(); }, [this] { return text(); });
    manager().updateVndResultInfo(image, results);
    if (ModelRecord* record = find(image); record != nullptr) {
        record->results = results;
    }
}

void Trial::algorithms() {
    const std::string image = name();
    const auto entries = list<std::string>([this] { return text(); });
    manager().updateZuAlgoInfo(image, entries);
    if (ModelRecord* record = findByFrame(image); record != nullptr) {
        record->algorithms = entries;
        for (const std::string& entry : entries) {
            std::string key;
            for (size_t i = 0; i < entry.size() && entry[i] != ':'; ++i) {
                key += entry[i];
            }
            record->timeA.insert({key, 0.0});
            record->timeB.insert({key, 0.0});
            record->states.insert({key, "none"});
        }
    }
}

void Trial::algorithmInfo() {
    const std::string image = name();
    const auto times = [this] {
        return dictionary<std::string, double>([this] { return text(); },
                                               [this] { return anyDouble(); });
    };
    SnapshotInfo::ZuAlgoInfo info;
    info.algoList = list<std::string>([this] { return text(); });
    info.algoTimeA = times();
    info.algoTimeB = times();
    info.algoTimeC = mData.ConsumeBool() ? info.algoTimeA : times();
    info.algoState = dictionary<std::string, std::string>([this] { return text(); },
                                                          [this] { return text(); });
    manager().updateZuAlgoInfo(image, info);
    if (ModelRecord* record = find(image); record != nullptr) {
        record->algorithms = info.algoList;
        record->timeA = info.algoTimeA;
        record->timeB = info.algoTimeB;
        record->timeC = info.algoTimeC;
        record->states = info.algoState;
    }
}

void Trial::error() {
    const std::string image = name();
    const std::string what = text();
    const bool none = mData.ConsumeBool();
    manager().updateSnapshotErrorInfo(image, none ? nullptr : what.c_str());
    if (ModelRecord* record = find(image); record != nullptr && !none) {
        record->errors.emplace_back(what.c_str());
    }
}

void Trial::postProc() {
    mPostProc = dictionary<std::string, uint32_t>([this] { return text(); },
                                                  [this] { return number<uint32_t>(); });
    manager().updatePostProcInfo(mPostProc);
}

double Trial::ageMs(const std::string& image) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const timespec& created = queue().records.at(image)->createTime;
    return static_cast<double>(now.tv_sec - created.tv_sec) * 1e3 +
           static_cast<double>(now.tv_nsec - created.tv_nsec) / 1e6;
}

void Trial::stage() {
    const std::string image = name();
    const uint32_t stage = someStage();
    manager().updateSnapshotTimeInfo(image, stage);
    ModelRecord* record = find(image);
    if (record == nullptr || stage > 14) {
        return;
    }
    // The intervals come from the clock; they are taken over if they can be right.
    const auto& times = queue().records.at(image)->snapshotInfo.timeInfo;
    const auto written = times.find(fuzz::stageText(stage));
    FUZZ_CHECK(written != times.end());
    const double age = ageMs(image) + 1;  // the library rounds otherwise
    if (stage == 0 || stage == 7 || stage == 11) {
        FUZZ_CHECK(written->second == (stage == 0 ? -1 : 0));
    } else if (stage == 6) {
        const auto requested = static_cast<double>(record->stages[fuzz::stageText(4)]);
        FUZZ_CHECK(written->second >= fuzz::truncated(0 - requested, INT64_MIN, INT64_MAX));
        FUZZ_CHECK(written->second <= fuzz::truncated(age - requested, INT64_MIN, INT64_MAX));
    } else {
        FUZZ_CHECK(written->second >= 0 && static_cast<double>(written->second) <= age);
    }
    record->stages[fuzz::stageText(stage)] = written->second;
    if (stage == 3 || stage == 13) {
        record->stages[fuzz::stageText(3)] = written->second;
        record->stages[fuzz::stageText(13)] = written->second;
    }
}

void Trial::stages() {
    const std::string image = name();
    const auto key = [this] { return mData.ConsumeBool() ? fuzz::stageText(someStage()) : text(); };
    const auto times = dictionary<std::string, int64_t>(key, [this] { return number<int64_t>(); });
    manager().updateSnapshotTimeInfo(image, times);
    ModelRecord* record = find(image);
    for (uint32_t stage = 0; record != nullptr && stage < 15; ++stage) {
        const auto given = times.find(fuzz::stageText(stage));
        if (given != times.end()) {
            record->stages[given->first] = given->second;
        }
    }
}

void Trial::nodeTime() {
    const std::string image = name();
    const std::string node = text();
    const double first = anyDouble();
    const double second = anyDouble();
    const double third = anyDouble();
    manager().updateNodeProcTime(image, node, first, second, third);
    if (ModelRecord* record = findByFrame(image); record != nullptr) {
        record->timeA[node] = first;
        record->timeB[node] = second;
        record->timeC[node] = third;
        if (second == -1.0) {
            markFailed(*record, image, "node process time out");
        }
    }
}

void Trial::nodeState() {
    const std::string image = name();
    const std::string node = text();
    const int32_t state = mData.ConsumeBool() ? number<int32_t>() : number<int8_t>() % 6;
    manager().updateNodeProcState(image, node, state);
    ModelRecord* record = findByFrame(image);
    if (record != nullptr && !fuzz::stateText(state).empty()) {
        record->states[node] = fuzz::stateText(state);
        if (state != 0) {
            markFailed(*record, image, "node process error");
        }
    }
}

void Trial::nodeStates() {
    const std::string image = name();
    const auto states = dictionary<std::string, std::string>([this] { return text(); },
                                                             [this] { return text(); });
    manager().updateNodeProcState(image, states);
    if (ModelRecord* record = findByFrame(image); record != nullptr) {
        for (const auto& [node, state] : states) {
            record->states[node] = state;
        }
    }
}

}  // namespace

// The log that the library binds to: formats each line, and prints none.
extern "C" int __android_log_print(int /*priority*/, const char* tag, const char* format, ...) {
    FUZZ_CHECK(tag != nullptr);
    char line[1024];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line, sizeof(line), format, arguments);
    va_end(arguments);
    FUZZ_CHECK(length >= 0);
    return 1;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Trial(bytes, size).run();
    return 0;
}
