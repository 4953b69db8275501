// What the library meets while a recording is played.

#include "Playback.h"

#include <dlfcn.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "InfoSynchronizerManager.h"

namespace {

std::vector<std::tuple<std::string, int32_t, std::thread::id>> gAsked;  // on what threads
std::vector<int64_t> gSleeps;                                           // when each is to end

int64_t nanoseconds(const timespec& time) {
    return time.tv_sec * INT64_C(1'000'000'000) + time.tv_nsec;
}

int64_t trueClock() {
    timespec time{};
    syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &time);
    return nanoseconds(time);
}

// Notes who asks, and asks the player.
void setAnswers(AnswerQuestion answer) {
    void* service = dlopen(kOverlapServicePath, RTLD_NOW | RTLD_NOLOAD);
    reinterpret_cast<SetAnswers*>(dlsym(service, kSetAnswers))([answer](const std::string& key) {
        char name[16];
        prctl(PR_GET_NAME, name);
        gAsked.emplace_back(name, gettid(), std::this_thread::get_id());
        return answer(key);
    });
}

// With --timing.
void play(const std::string& lines, uint32_t rounds) {
    const std::string path = testing::TempDir() + "playback-" + std::to_string(getpid()) + ".jsonl";
    std::ofstream(path) << lines;
    replay::LogFile log(path);
    ReplayOptions options;
    options.timing = true;
    options.repeat = rounds;
    ASSERT_TRUE(replay::readHeader(log, options.header));
    replay::StepReader reader(log, options.header);
    replay::Progress noProgress(false, 0);
    const auto facts = replay::checkLog(reader, options, noProgress);
    if (!facts) {
        FAIL();
    }
    gSleeps.clear();
    replay::Playback(reader, *facts, options, setAnswers, [](const auto&, const auto& call) {
        const int64_t before = trueClock();
        call();
        timespec after{};  // no longer what the call was told
        clock_gettime(CLOCK_MONOTONIC, &after);
        EXPECT_LE(before, nanoseconds(after));
        EXPECT_GE(trueClock(), nanoseconds(after));
    }).play(noProgress);
}

TEST(Playback, TellsThreadsTheRecordedMomentAndKeepsTheGaps) {
    play(R"({"format":"camInfosync capture log","version":"1.0"}
{"n":1,"at":5000000001,"thread":"one","tid":11,"call":"registerSnapshotRequestRecord","image":"A"}
{"n":2,"at":5000000301,"thread":"two","tid":12,"call":"registerSnapshotRequestRecord","image":"B"}
{"answered":1,"at":6000000002,"thread":"one","tid":11,"key":"","answer":""}
{"n":3,"at":5000000000,"thread":"new","tid":11,"call":"registerSnapshotRequestRecord","image":"C"})",
         1);
    const auto one = std::get<std::thread::id>(gAsked.at(0));
    EXPECT_NE(one, std::get<std::thread::id>(gAsked.at(1)));
    EXPECT_EQ(std::tuple("one", 11, one), gAsked[0]);
    EXPECT_EQ(std::tuple("two", 12), std::tie(std::get<0>(gAsked[1]), std::get<1>(gAsked[1])));
    EXPECT_EQ(std::tuple("new", 11, one), gAsked.at(2));
    const auto& queue = *camInfosync::InfoSynchronizerManager::getInstance().mRequestRecordQueue;
    EXPECT_EQ(6'000'000'002, nanoseconds(queue.records.at("A")->createTime));  // the answer's time
    EXPECT_EQ(5'000'000'301, nanoseconds(queue.records.at("B")->createTime));
    ASSERT_EQ(2U, gSleeps.size());
    EXPECT_EQ(6'000'000'002 - 5'000'000'301, gSleeps[1] - gSleeps[0]);
}

// A round's times begin when the round does.
TEST(Playback, KeepsTheGapsInEachRound) {
    play(R"({"call":"registerSnapshotRequestRecord","image":"A","at":1}
{"call":"registerSnapshotRequestRecord","image":"B","at":2})",
         2);
    ASSERT_EQ(2U, gSleeps.size());
    EXPECT_LT(gSleeps[0], gSleeps[1]);
}

}  // namespace

extern "C" int clock_nanosleep(clockid_t, int, const timespec* until, timespec*) {
    gSleeps.push_back(nanoseconds(*until));
    return 0;
}
