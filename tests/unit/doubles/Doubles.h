// What stands in for the phone's libraries while the tests run. The test program defines the
// functions of those libraries and the library under test binds to them, from load time on.
//
// Everything that the library does to them goes into one journal: each call to the service, and
// each message, which starts with its level if it reached both logs alike, and else with the
// name of the one that it reached. What a test must have caused stands under its name in
// expected/<suite>.txt, in order; without its name there, that is nothing. There, ".cpp:*" is any
// line of a source file.

#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CallService.h"
#include "IntentAwareSys.h"

namespace doubles {

// Starts with an empty journal and open log gates, and compares the journal at the end.
class Test : public testing::Test {
  protected:
    Test();
    void TearDown() override;
};

// Adds a line to the journal: what the test itself has seen.
void note(const std::string& line);
template <typename Value>
void note(const std::string& name, const Value& value) {
    note(name + " = " + testing::PrintToString(value));
}

// Takes the journal away, so that it is not compared.
std::vector<std::string> takeJournal();

// Set by a test, and undone before the next; onLog at its end.
extern std::function<std::string(const std::string& key)> onQuery;
extern std::function<void(const Call& call)> onCall;  // in every call, before its answer
extern std::function<void()> onLog;                   // in every message
extern std::atomic<int> threadsLeft;                  // that may still start; negative: any number

IntentAwareSys* service();

// Stops CLOCK_MONOTONIC at a time, and counts how often it is read from then on.
void stopClock(int64_t seconds, int64_t nanoseconds);
extern std::atomic<int> clockReads;

// How often `run` locks `mutex` on this thread; null counts every mutex. `onLock` is called before
// each lock that counts.
int locksOf(std::mutex* mutex, const std::function<void()>& run,
            const std::function<void()>& onLock = {});

// Whether another thread could lock `mutex`.
bool isFree(std::mutex& mutex);

// The task profiles and the nice value that this thread asked for.
extern thread_local std::string profiles;
extern thread_local int nice;

}  // namespace doubles
