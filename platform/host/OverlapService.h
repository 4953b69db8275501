// What a desk program can ask the stand-in overlap library for, besides what a phone's gives.
// The names are looked up with dlsym in the loaded library.

#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// One call that the service received.
struct ServiceCall {
    enum class Kind { kSetParam, kReportEvent, kFinishReport };
    Kind kind;
    std::string id;
    std::string key;    // of setParam
    std::string value;  // of setParam; the event of reportEvent
    int32_t first = 0;  // the integers of finishReport
    int32_t second = 0;
    std::string note;  // of who watches; not from the library
};

// Where the stand-in lies on the phone, and so under the host root.
inline constexpr char kOverlapServicePath[] = "/vendor/lib64/com.veltro.camhal.overlap.so";

// Moves the calls received so far into `calls`, in the order of their arrival, and forgets
// them. From any thread.
using TakeServiceCalls = void(std::vector<ServiceCall>* calls);
extern "C" TakeServiceCalls infosyncTakeServiceCalls;
inline constexpr char kTakeServiceCalls[] = "infosyncTakeServiceCalls";

// Answers a question of the library, on the thread that asks. May throw.
using AnswerQuestion = std::function<std::string(const std::string& key)>;

// Makes `answer` the one that answers from now on; an empty one leaves it to the environment. To be
// called while nobody asks.
using SetAnswers = void(AnswerQuestion answer);
extern "C" SetAnswers infosyncSetAnswers;
inline constexpr char kSetAnswers[] = "infosyncSetAnswers";

// Is shown each call on the thread that makes it, before the call returns, and may put a note to
// it. The library may hold its records' mutex meanwhile.
using WatchCall = std::function<void(ServiceCall& call)>;

// Makes `watch` the one that is shown the calls from now on; an empty one is nobody. To be called
// while none is made.
using SetWatch = void(WatchCall watch);
extern "C" SetWatch infosyncSetWatch;
inline constexpr char kSetWatch[] = "infosyncSetWatch";
