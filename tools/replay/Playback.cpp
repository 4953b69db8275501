#include "Playback.h"

#include <sys/prctl.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "CallFilter.h"
#include "CaptureLog.h"
#include "HostRoot.h"
#include "InfoSynchronizerManager.h"
#include "LogCheck.h"
#include "OverlapService.h"
#include "Pace.h"
#include "Progress.h"
#include "ReplayOptions.h"
#include "StepReader.h"

namespace replay {
namespace {

using camInfosync::InfoSynchronizerManager;

// What the service throws where it threw at the recording.
struct ServiceThrew {};

constexpr size_t kMostPosted = size_t{1} << 16;  // bytes of lines
constexpr unsigned kDeepest = 100;  // calls within each other's questions; each takes some stack

// A call that the calling thread is inside of.
class CallInProgress {
  public:
    CallInProgress(const CaptureStep& step, bool awaitsAnswer)
        : mStep(step),
          mOuter(innermost),
          mDepth(mOuter != nullptr ? mOuter->mDepth + 1 : 0),
          mAwaitsAnswer(awaitsAnswer && mDepth < kDeepest) {
        innermost = this;
        setMoment(step);
        pretend();
    }
    ~CallInProgress() {
        innermost = mOuter;
        infosyncPretend(nullptr);
    }
    CallInProgress(const CallInProgress&) = delete;
    CallInProgress& operator=(const CallInProgress&) = delete;

    static CallInProgress* current() { return innermost; }
    // The call of that number that waits for its answer, or null.
    static CallInProgress* find(uint64_t number) {
        CallInProgress* call = innermost;
        while (call != nullptr && (call->mStep.number != number || !call->mAwaitsAnswer)) {
            call = call->mOuter;
        }
        return call;
    }

    bool awaitsAnswer() const { return mAwaitsAnswer; }
    const std::optional<ServiceAnswer>& answer() const { return mAnswer; }
    // From the answer on, the time is that of the answer's line.
    void setAnswer(const CaptureStep& step) {
        mAnswer = step.answer;
        mAwaitsAnswer = false;
        setMoment(step);
    }
    void pretend() const { infosyncPretend(mHasMoment ? &mMoment : nullptr); }

  private:
    void setMoment(const CaptureStep& step) {
        mHasMoment = step.at.has_value();
        mMoment = {step.at.value_or(0), step.tid.value_or(0)};
    }

    static thread_local CallInProgress* innermost;

    const CaptureStep& mStep;
    CallInProgress* const mOuter;
    const unsigned mDepth;
    bool mAwaitsAnswer;
    std::optional<ServiceAnswer> mAnswer;
    bool mHasMoment = false;
    RecordedMoment mMoment{};
};

thread_local CallInProgress* CallInProgress::innermost = nullptr;

// Names the calling thread, as far as the system keeps a name.
void nameThread(const std::string& name) {
    thread_local std::string current;
    if (name != current) {
        prctl(PR_SET_NAME, name.c_str());
        current = name;
    }
}

// Recorded threads are known by their ids, others by their names.
std::string threadKey(const CaptureStep& step) {
    return step.tid ? '#' + std::to_string(*step.tid) : step.thread;
}

}  // namespace

Playback::Playback(StepReader& reader, const LogFacts& facts, const ReplayOptions& options,
                   SetAnswers* setAnswers, Around around, Answered answered)
    : mReader(reader),
      mFacts(facts),
      mOptions(options),
      mAround(std::move(around)),
      mAnswered(std::move(answered)),
      mInOrder(reader.header().exists() && !options.free),
      mManager(InfoSynchronizerManager::getInstance()),
      mFilter(reader.header(), options.view.images),
      mAnswers(options.answer),
      mAnswering(setAnswers, [this](const std::string& key) { return answer(key); }) {}

void Playback::play(Progress& progress) {
    for (uint32_t round = 1; round <= mOptions.repeat && !mIsStopped; ++round) {
        mReader.restart(round == 1 ? std::string() : '#' + std::to_string(round));
        mFilter.restart();
        mAnswers.restart(mReader.header().answers);
        mPace = mOptions.timing ? std::optional<Pace>(std::in_place) : std::nullopt;
        playRound(round * mReader.log().size(), progress);
    }
}

void Playback::playRound(uint64_t doneBefore, Progress& progress) {
    for (CaptureStep step; !mIsStopped && mReader.next(step);) {
        if (!mReader.errors().empty()) {
            throwChanged();
        }
        progress.show(doneBefore + mReader.log().position());
        if (mPace && step.at) {
            waitForLastPost();
            mPace->keep(*step.at);
        }
        playStep(step);
    }
    waitForLastPost();
    mThreads.wait();
    if (!mIsStopped && !mReader.isAtNotedLength()) {
        throwChanged();
    }
}

void Playback::throwChanged() const {
    throw std::runtime_error(mReader.place() + ": the log has changed since it was checked");
}

void Playback::playStep(CaptureStep& step) {
    switch (step.kind) {
        case CaptureStep::Kind::kBarrier:
            mThreads.wait();
            break;
        case CaptureStep::Kind::kSleep:
            waitForLastPost();
            std::this_thread::sleep_for(step.sleep);
            break;
        case CaptureStep::Kind::kCall:
        case CaptureStep::Kind::kOmittedCall:
            if (mFilter.judge(step) == CallFilter::Verdict::kPlayed) {
                playCall(step);
            }
            break;
        case CaptureStep::Kind::kAnswer:
            playAnswer(step);
            break;
        default:  // nothing to do
            break;
    }
}

void Playback::playCall(CaptureStep& step) {
    mCalls += 1;
    mFlushes += step.isFlush ? 1 : 0;
    const bool awaitsAnswer =
            step.isRecorded() &&
            std::binary_search(mFacts.answered.begin(), mFacts.answered.end(), step.number);
    if (!step.isRecorded() && step.thread.empty()) {
        waitForLastPost();
        makeCall(step, awaitsAnswer);
        return;
    }
    const std::string thread = threadKey(step);
    post(thread, [this, step = std::move(step), awaitsAnswer] {
        nameThread(step.thread);
        makeCall(step, awaitsAnswer);
    });
}

void Playback::makeCall(const CaptureStep& step, bool awaitsAnswer) {
    auto& manager =
            step.onOtherManager ? *static_cast<InfoSynchronizerManager*>(GetInstance()) : mManager;
    mAround(step, [&] {
        const CallInProgress inProgress(step, awaitsAnswer);
        try {
            step.run(manager);
        } catch (const ServiceThrew&) {
            return;  // as it did when it was recorded
        }
    });
}

void Playback::playAnswer(CaptureStep& step) {
    const std::string thread = threadKey(step);
    post(thread, [this, step = std::move(step)] {
        if (!step.answer.threw) {
            mAnswers.set(step.answer.key, step.answer.text);
        }
        if (CallInProgress* call = CallInProgress::find(step.number); call != nullptr) {
            call->setAnswer(step);
        }
    });
}

void Playback::post(const std::string& thread, std::function<void()> task) {
    if (!mInOrder) {
        mThreads.post(thread, mReader.lineSize(), std::move(task));
        return;
    }
    // Calls of one thread in a row wait for each other there, while the next lines are read.
    if (thread != mLastThread || mPostedSize > kMostPosted) {
        waitForLastPost();
    }
    mThreads.post(thread, mReader.lineSize(), std::move(task));
    mLastThread = thread;
    mPostedSize += mReader.lineSize();
}

void Playback::waitForLastPost() {
    if (!mLastThread.empty()) {
        mThreads.waitForRest(mLastThread);
        mLastThread.clear();
        mPostedSize = 0;
    }
}

// Called by the service, on the thread that asks.
std::string Playback::answer(const std::string& key) {
    std::optional<std::string> text = findAnswer(key);
    if (mAnswered) {
        mAnswered(key, text ? &*text : nullptr);
    }
    if (!text) {
        throw ServiceThrew();
    }
    return *std::move(text);
}

// Returns nothing where the service threw.
std::optional<std::string> Playback::findAnswer(const std::string& key) {
    CallInProgress* call = CallInProgress::current();
    if (call == nullptr || !call->awaitsAnswer()) {
        return mAnswers.of(key);
    }
    mThreads.pause([call] { return call->answer().has_value(); });
    call->pretend();  // calls within the pause have pretended theirs
    const auto& answer = call->answer();
    if (!answer || mAnswers.areFixed() || answer->key != key) {
        return mAnswers.of(key);
    }
    return answer->threw ? std::nullopt : std::optional<std::string>(answer->text);
}

}  // namespace replay
