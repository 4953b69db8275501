// Makes the calls of a checked log.

#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "CallFilter.h"
#include "CaptureLog.h"
#include "LogCheck.h"
#include "NamedThreads.h"
#include "OverlapService.h"
#include "Pace.h"
#include "Progress.h"
#include "ReplayOptions.h"
#include "ServiceAnswers.h"
#include "StepReader.h"

namespace camInfosync {
class InfoSynchronizerManager;
}  // namespace camInfosync

namespace replay {

// Plays a log through the library, and answers what the library asks meanwhile.
//
// A log with a header is played in the order of its lines: each call on its thread, and the next
// line once it has returned or, if an answer's line names it, once it asks. Lines of the asking
// thread are played within the question, and the answer's line lets it go on. In other logs, and
// with the option `free`, only the order within each thread is kept.
//
// While a call is made, its thread is told the recorded time and id; see HostRoot.h.
class Playback {
  public:
    // Makes `call` on the call's thread, and may do something before and after.
    using Around = std::function<void(const CaptureStep& step, const std::function<void()>& call)>;

    // Is told on the thread that asks, just before it is answered; a null answer: the service
    // throws.
    using Answered = std::function<void(const std::string& key, const std::string* answer)>;

    // All references must outlive this. `setAnswers` is the service's; null if there is none.
    Playback(StepReader& reader, const LogFacts& facts, const ReplayOptions& options,
             SetAnswers* setAnswers, Around around, Answered answered = {});
    ~Playback() = default;
    Playback(const Playback&) = delete;
    Playback& operator=(const Playback&) = delete;

    // Returns when all threads are done. Throws std::runtime_error if the log has changed since
    // it was checked, and what the library throws.
    void play(Progress& progress);

    // Lets play() return once the calls that have been begun are over. Any thread.
    void stop() { mIsStopped = true; }

    uint64_t calls() const { return mCalls; }
    uint64_t flushes() const { return mFlushes; }

  private:
    // Lets somebody answer for the service, for as long as it lives.
    class Answering {
      public:
        Answering(SetAnswers* set, AnswerQuestion answer) : mSet(set) {
            if (mSet != nullptr) {
                mSet(std::move(answer));
            }
        }
        ~Answering() {
            if (mSet != nullptr) {
                mSet(nullptr);
            }
        }
        Answering(const Answering&) = delete;
        Answering& operator=(const Answering&) = delete;

      private:
        SetAnswers* const mSet;
    };

    void playRound(uint64_t doneBefore, Progress& progress);
    [[noreturn]] void throwChanged() const;
    void playStep(CaptureStep& step);
    void playCall(CaptureStep& step);
    void makeCall(const CaptureStep& step, bool awaitsAnswer);
    void playAnswer(CaptureStep& step);
    void post(const std::string& thread, std::function<void()> task);
    void waitForLastPost();
    std::string answer(const std::string& key);
    std::optional<std::string> findAnswer(const std::string& key);

    StepReader& mReader;
    const LogFacts& mFacts;
    const ReplayOptions& mOptions;
    const Around mAround;
    const Answered mAnswered;
    const bool mInOrder;
    camInfosync::InfoSynchronizerManager& mManager;
    CallFilter mFilter;
    ServiceAnswers mAnswers;
    std::optional<Pace> mPace;
    uint64_t mCalls = 0;
    uint64_t mFlushes = 0;
    std::atomic<bool> mIsStopped{false};
    std::string mLastThread;  // that may still have posted tasks to do; empty if none has
    size_t mPostedSize = 0;   // of these tasks
    Answering mAnswering;     // before the threads, and so longer
    NamedThreads mThreads;
};

}  // namespace replay
