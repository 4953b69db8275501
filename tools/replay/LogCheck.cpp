#include "LogCheck.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "CallFilter.h"
#include "CaptureLog.h"
#include "LastCalls.h"
#include "LineError.h"
#include "Printable.h"
#include "Progress.h"
#include "ReplayOptions.h"
#include "Spelling.h"
#include "StepReader.h"

namespace replay {
namespace {

using Kind = CaptureStep::Kind;
using Verdict = CallFilter::Verdict;

constexpr size_t kMostShown = 10;
constexpr size_t kLinesToKnowALogBy = 10;
constexpr size_t kLongestName = 60;

std::string counted(uint64_t number, const std::string& what) {
    return std::to_string(number) + ' ' + what + (number == 1 ? "" : "s");
}

// One pass through a log.
class Check {
  public:
    Check(StepReader& reader, const ReplayOptions& options)
        : mReader(reader),
          mOptions(options),
          mFilter(reader.header(), options.view.images),
          mLastCalls(reader.header().service) {}

    // Returns whether nothing is wrong.
    bool run(Progress& progress) {
        mReader.restart({});
        mFilter.restart();
        for (CaptureStep step; mReader.next(step);) {
            addLine(step);
            if (isForeign() && mForeign == kLinesToKnowALogBy) {
                break;
            }
            progress.show(mReader.log().position());
        }
        mReader.noteLength();
        std::sort(mFacts.answered.begin(), mFacts.answered.end());
        checkImages();
        showErrors();
        return mErrors == 0;
    }

    void showNotes() {
        const std::string log = printable(mReader.log().name());
        if (mCutLine != 0) {
            addNote(log + ':' + std::to_string(mCutLine) +
                    ": the last line is cut off and left out; the recording ended there");
        }
        if (mCutCalls != 0 || mReader.header().moreCut != 0) {
            addNote(log + cutImages());
        }
        if (mOmittedCalls != 0) {
            addNote(log + ": " + counted(mOmittedCalls, "call") +
                    " left out: the arguments were too long to be recorded");
        }
        if (mRecorded && !mEnded) {
            showUnfinished(log);
        }
        if (mFacts.calls == 0) {
            addNote(log + ": has no calls");
        }
    }

    LogFacts takeFacts() { return std::move(mFacts); }

  private:
    void addLine(const CaptureStep& step) {
        mCutLine = mReader.lineIsCut() ? mReader.log().lineNumber() : 0;
        for (const LineError& error : mReader.errors()) {
            addError(mReader.place() + ": " + error.field + ": " + error.what);
        }
        const bool brokenText = step.kind == Kind::kBroken && !mReader.beginsAsObject();
        if (step.kind == Kind::kForeign || brokenText) {
            mForeign += 1;
        } else if (step.kind != Kind::kNothing || !mReader.errors().empty()) {
            mKnown += 1;
        }
        if (mReader.errors().empty()) {
            addStep(step);
        }
    }

    void addStep(const CaptureStep& step) {
        const bool isCall = step.kind == Kind::kCall || step.kind == Kind::kOmittedCall;
        if (isCall) {
            addCall(step);
        } else if (step.kind == Kind::kAnswer) {
            addAnswer(step);
        } else if (step.kind == Kind::kEnd) {
            mEnded = true;
            mFacts.goesOn = step.goesOn;
        }
        if (mOptions.timing && (isCall || step.kind == Kind::kAnswer) && !step.at) {
            addError(mReader.place() + ": at: is missing, and --timing needs it");
        }
        if (step.isRecorded()) {
            mRecorded = true;
            mLastCalls.add(step, mReader.log().lineNumber());
        }
    }

    void addCall(const CaptureStep& call) {
        mFacts.calls += 1;
        mFacts.callsWithTime += call.at ? 1 : 0;
        const Verdict verdict = mFilter.judge(call);
        mCutCalls += verdict == Verdict::kCut ? 1 : 0;
        mOmittedCalls += verdict == Verdict::kOmitted ? 1 : 0;
        if (call.image && !mOptions.view.images.empty()) {
            mImages.insert(*call.image);
        }
    }

    void addAnswer(const CaptureStep& step) {
        mFacts.answered.push_back(step.number);
        if (step.answer.key != kCollectionKey || step.answer.threw) {
            return;
        }
        if (!mFacts.firstAnswer) {
            mFacts.firstAnswer = step.answer.text;
        } else if (step.answer.text != mLastAnswer) {
            mFacts.laterAnswers += 1;
        }
        mLastAnswer = step.answer.text;
    }

    void addError(std::string text) {
        if (++mErrors <= kMostShown) {
            mErrorTexts.push_back(std::move(text));
        }
    }

    // Each image that is asked for is in the log.
    void checkImages() {
        if (mErrors != 0) {
            return;
        }
        const std::vector<std::string_view> known(mImages.begin(), mImages.end());
        for (const std::string& image : mOptions.view.images) {
            if (mImages.count(image) == 0) {
                addError("--image: " + printable(image, kLongestName) +
                         " is in no line of the log" + printable(didYouMean(image, known)));
            }
        }
    }

    // Nothing that was read so far looks like a capture log.
    bool isForeign() const { return !mReader.header().exists() && mKnown == 0 && mForeign > 1; }

    void showErrors() const {
        if (isForeign()) {
            std::cerr << printable(mReader.log().name())
                      << ": is no capture log: none of its first " << mForeign
                      << " lines is a call\n";
            return;
        }
        for (const std::string& text : mErrorTexts) {
            std::cerr << text << '\n';
        }
        if (mErrors > kMostShown) {
            std::cerr << "... and " << mErrors - kMostShown << " more\n";
        }
    }

    void addNote(std::string note) {
        std::cerr << note << '\n';
        mFacts.notes.push_back(std::move(note));
    }

    std::string cutImages() const {
        const LogHeader& header = mReader.header();
        const std::string more = header.moreCut == 0
                                         ? ""
                                         : "; " + counted(header.moreCut, "more such image") +
                                                   " played without them";
        return ": " + counted(mCutCalls, "call") + " of " + counted(header.cut.size(), "image") +
               " left out: the first calls of these images are in an earlier file" + more;
    }

    void showUnfinished(const std::string& log) {
        const std::vector<LastCalls::Call> calls = mLastCalls.unfinished();
        const size_t first = calls.size() > kMostShown ? calls.size() - kMostShown : 0;
        if (first != 0) {
            addNote(log + ": " + counted(first, "earlier call") + " may not have returned either");
        }
        for (size_t i = first; i < calls.size(); ++i) {
            addNote(log + ':' + std::to_string(calls[i].line) + ": " +
                    std::string(calls[i].operation) + " on thread " + printable(calls[i].thread) +
                    " (" + std::to_string(calls[i].tid) +
                    ") may not have returned when the file ends");
        }
    }

    StepReader& mReader;
    const ReplayOptions& mOptions;
    CallFilter mFilter;
    LastCalls mLastCalls;
    LogFacts mFacts;
    std::string mLastAnswer;
    std::set<std::string> mImages;  // that lines name, if any are asked for
    std::vector<std::string> mErrorTexts;
    uint64_t mErrors = 0;
    uint64_t mKnown = 0;    // lines that may be of a capture log
    uint64_t mForeign = 0;  // lines that cannot
    uint64_t mCutLine = 0;
    uint64_t mCutCalls = 0;
    uint64_t mOmittedCalls = 0;
    bool mRecorded = false;
    bool mEnded = false;
};

}  // namespace

std::optional<LogFacts> checkLog(StepReader& reader, const ReplayOptions& options,
                                 Progress& progress) {
    Check check(reader, options);
    if (!check.run(progress)) {
        return std::nullopt;
    }
    check.showNotes();
    return check.takeFacts();
}

}  // namespace replay
