// Tells the library of many captures from eight threads, or plays a recording of that, and writes
// down what the service received and what is left:
//
//     round_trip take SEED CAPTURES FOLDER
//     round_trip play LOG FOLDER PLAYER

#include <dlfcn.h>
#include <sys/types.h>

#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "HostRoot.h"
#include "InfoSynchronizerManager.h"
#include "LogFile.h"
#include "LogHeader.h"
#include "OverlapService.h"
#include "RecordModel.h"
#include "ReplayOptions.h"
#include "ServiceReport.h"

namespace {

using camInfosync::InfoSynchronizerManager;
using camInfosync::RequestRecord;
using Manager = InfoSynchronizerManager;
using Text = std::string;

constexpr unsigned kThreads = 8;
constexpr const char* kSwitch = "snapshotInfoCollectEnable";

Manager& manager() {
    return Manager::getInstance();
}

Manager& otherManager() {
    return *static_cast<Manager*>(GetInstance());
}

// What a thread is told the time is, so that the recorder and the library read the same.
thread_local RecordedMoment moment{};

void goOnInTime() {
    static std::atomic<uint64_t> now{1'000'000'000'000};
    moment.monotonic = now += 333'333;
    infosyncPretend(&moment);
}

// What one thread of the pipeline tells, at random.
class Stage {
  public:
    Stage(unsigned seed, unsigned number) : mRandom(seed * kThreads + number), mNumber(number) {}

    void takeCapture(unsigned capture) {
        mImage = chance(5) ? "SHARED_" + std::to_string(capture % 7)
                           : "IMG_" + std::to_string(mNumber) + '_' + std::to_string(capture);
        if (chance(40)) {
            mImage += Text("\xff\0\"", 3);
        }
        call([&] { any().registerSnapshotRequestRecord(mImage); });
        if (!chance(20)) {
            call([&] { any().updateFrameInfo(mImage, number(), text(), {number(), 2}, number()); });
        }
        for (unsigned updates = pick(12); updates > 0; --updates) {
            call([&] { update(any(), chance(30) ? "UNKNOWN" : mImage); });
        }
        call([&] { flush(); });
        if (!chance(20)) {
            call([&] { any().unregisterSnapshotRequestRecord(mImage); });
        }
        call([&] { request(); });
    }

  private:
    // What the service throws ends the call only.
    template <typename Call>
    static void call(Call make) {
        goOnInTime();
        try {
            make();
        } catch (const std::runtime_error&) {
        }
    }

    unsigned pick(unsigned count) { return static_cast<unsigned>(mRandom() % count); }
    bool chance(unsigned of) { return pick(of) == 0; }
    uint32_t number() { return static_cast<uint32_t>(mRandom()); }
    int32_t integer() { return static_cast<int32_t>(number()); }
    int64_t wide() { return static_cast<int64_t>(mRandom() * mRandom()); }
    Text text() {
        static const Text rare[] = {Text("\xc3(\0", 3), "\x1f", "\xf5\x80\x80\x80",
                                    "\xf4\x8f\xbf\xbf"};
        return chance(9) ? rare[pick(4)] : Text(pick(40), 'x');
    }
    Text node() { return "node " + std::to_string(pick(4)); }
    double real() {
        const double special[] = {-0.0, std::nan("7"), -HUGE_VAL, 1e-310, -1.0};
        return chance(4) ? special[pick(5)] : static_cast<double>(wide()) / 1e6;
    }
    Manager& any() { return chance(10) ? otherManager() : manager(); }

    void flush() {
        any().snapshotRequestInfoFlush(mImage, chance(30) ? camInfosync::INFO_SYNC_TYPE_CMD
                                                          : camInfosync::INFO_SYNC_TYPE_COLLECT);
    }

    void request() {
        void* out = nullptr;
        const Text key = chance(5) ? Text(1100, 'k') : "iso";
        switch (pick(8)) {
            case 0:
                return manager().request(camInfosync::INFO_SYNC_TYPE_CMD, key.c_str(), &out);
            case 1:
                return otherManager().request(camInfosync::INFO_SYNC_TYPE_CMD, nullptr, &out);
            case 2:
                return manager().request(camInfosync::INFO_SYNC_TYPE_CMD, "iso", nullptr);
            case 3:
                return manager().request(camInfosync::INFO_SYNC_TYPE_COLLECT_ALT, nullptr, &out);
            case 4:
                return reportDirectly();
            default:
                return;
        }
    }

    void reportDirectly() {
        RequestRecord record(static_cast<camInfosync::RequestType>(integer()));
        record.frameInfo = {number(), text(), {7}, 1, "DIRECT_" + std::to_string(mNumber)};
        record.snapshotInfo.zuAlgoInfo.algoTimeA = {{node(), real()}, {text(), real()}};
        record.snapshotInfo.zuAlgoInfo.algoTimeC = {{node(), real()}};
        record.errorInfo = {text()};
        manager().request(camInfosync::INFO_SYNC_TYPE_COLLECT, &record, nullptr);
    }

    void update(Manager& to, const Text& image) {
        switch (pick(15)) {
            case 0:
                return to.updateRequestInfo(image, integer(), integer(), chance(2), wide(),
                                            {integer()}, {40, 41});
            case 1:
                return to.updateUIInfo(image, static_cast<camInfosync::RequestType>(integer()),
                                       number(), integer(), static_cast<float>(real()), text());
            case 2:
                return to.updateAnchor3aInfo(image, static_cast<float>(real()), integer(),
                                             static_cast<float>(real()), wide());
            case 3:
                return to.updateAnchorFrame(image, integer());
            case 4:
                return to.updateVndResultInfo(image, 40 + pick(3),
                                              static_cast<int32_t>(pick(7)) - 1);
            case 5:
                return to.updateVndResultInfo(image, {{integer(), text()}, {-1, text()}});
            case 6:
                return to.updateZuAlgoInfo(image, std::vector{node() + ":more", text()});
            case 7:
                return to.updateZuAlgoInfo(image, {{node()},
                                                   {{node(), real()}},
                                                   {{text(), real()}},
                                                   {{node(), real()}},
                                                   {{node(), text()}}});
            case 8:
                return to.updateSnapshotErrorInfo(image, chance(4) ? nullptr : "an error");
            case 9:
                return to.updatePostProcInfo({{text(), number()}, {node(), 1}});
            case 10:
                return to.updateSnapshotTimeInfo(image, pick(16));
            case 11:
                return to.updateSnapshotTimeInfo(
                        image, std::map<Text, int64_t>{{"7anchor_time", wide()}, {text(), 1}});
            case 12:
                return to.updateNodeProcTime(image, node(), real(), real(), real());
            case 13:
                return to.updateNodeProcState(image, node(), static_cast<int32_t>(pick(7)) - 1);
            default:
                return to.updateNodeProcState(image, std::map<Text, Text>{{text(), text()}});
        }
    }

    std::mt19937_64 mRandom;
    const unsigned mNumber;
    Text mImage;
};

// Changes its answers, calls the library from within, and throws now and then.
Text answer(const Text& key) {
    static std::atomic<unsigned> questions{0};
    const unsigned question = ++questions;
    if (question % 199 == 0) {
        goOnInTime();
        manager().updateAnchorFrame("SHARED_1", static_cast<int32_t>(question));
    }
    if (question % 997 == 0) {
        throw std::runtime_error("no answer");
    }
    if (key == kSwitch) {
        return question % 50 == 0 ? "disabled" : "enabled";
    }
    return Text(size_t{11} * (question / 64 % 5), 'a');
}

template <typename Function>
Function* findInService(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, name));
}

void takeCaptures(unsigned seed, unsigned captures, const Text& folder) {
    findInService<SetAnswers>(kSetAnswers)(answer);
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (unsigned number = 0; number < kThreads; ++number) {
        threads.emplace_back([=] {
            Stage stage(seed, number);
            for (unsigned capture = number; capture < captures; capture += kThreads) {
                stage.takeCapture(capture);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const replay::File calls(std::fopen((folder + "/calls.jsonl").c_str(), "w"));
    replay::ServiceReport(findInService<TakeServiceCalls>(kTakeServiceCalls), calls.get()).drain();
}

int play(const Text& path, const Text& folder, const char* player) {
    void* const library = dlopen(player, RTLD_NOW);
    auto* const entry = reinterpret_cast<InfosyncPlay*>(dlsym(library, kInfosyncPlay));
    replay::LogFile log(path);
    ReplayOptions options;
    options.path = path;
    options.log = &log;
    if (!replay::readHeader(log, options.header)) {
        return 2;
    }
    options.json = folder + "/calls.jsonl";
    options.view.quiet = true;
    return entry(&options);
}

// Everything that a queue holds, byte for byte, also of texts that are not UTF-8.
nlohmann::json contentOf(Manager& from) {
    const camInfosync::RequestRecordQueue& queue = *from.mRequestRecordQueue;
    nlohmann::json records;
    for (const auto& [name, record] : queue.records) {
        records[name] = fuzz::contentOf(*record);
    }
    return {records, queue.errorImageNames, queue.postProcInfo};
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<Text> arguments(argv + 1, argv + argc);
    // Records of the manager that registration never reaches, so that updates find some there.
    for (const char* name : {"SHARED_1", "SHARED_2", "IMG_3_3"}) {
        otherManager().mRequestRecordQueue->emplace_back(name);
        otherManager().mRequestRecordQueue->records[name]->createTime = {};
    }
    int status = 0;
    if (arguments.at(0) == "take") {
        takeCaptures(static_cast<unsigned>(std::stoul(arguments.at(1))),
                     static_cast<unsigned>(std::stoul(arguments.at(2))), arguments.at(3));
    } else {
        status = play(arguments.at(1), arguments.at(2), argv[4]);
    }
    std::ofstream left(arguments.at(arguments[0] == "take" ? 3 : 2) + "/left.cbor");
    for (Manager* from : {&manager(), &otherManager()}) {
        nlohmann::json::to_cbor(contentOf(*from), left);
    }
    return status;
}
