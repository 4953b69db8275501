// Checks a capture log, plays it through the library, and sums up.

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "CaptureLog.h"
#include "ExitStatus.h"
#include "InfoSyncType.h"
#include "InfoSynchronizerManager.h"
#include "LineError.h"
#include "LogFile.h"
#include "NamedThreads.h"
#include "OutputFile.h"
#include "OverlapService.h"
#include "Printable.h"
#include "Progress.h"
#include "ReplayOptions.h"
#include "ServiceReport.h"
#include "StepReader.h"
#include "Totals.h"

namespace replay {
namespace {

using camInfosync::InfoSynchronizerManager;

constexpr size_t kMostErrorsShown = 10;

// Reads the whole log and lists what is wrong on standard error. Returns whether it is good.
bool checkLog(StepReader& reader, Progress& progress) {
    uint64_t count = 0;
    reader.restart({});
    for (CaptureStep step; reader.next(step);) {
        for (const LineError& error : reader.errors()) {
            if (++count <= kMostErrorsShown) {
                std::cerr << reader.place() << ": " << error.field << ": " << error.what << '\n';
            }
        }
        progress.show(reader.log().position());
    }
    reader.noteLength();
    if (count > kMostErrorsShown) {
        std::cerr << "... and " << count - kMostErrorsShown << " more\n";
    }
    return count == 0;
}

// Plays a checked log through the library.
class Player {
  public:
    Player(StepReader& reader, ServiceReport& report, Progress& progress)
        : mReader(reader), mReport(report), mProgress(progress) {}

    // Returns when all threads are done.
    void play(uint32_t rounds) {
        for (uint32_t round = 1; round <= rounds; ++round) {
            mReader.restart(round == 1 ? std::string() : '#' + std::to_string(round));
            playRound(round * mReader.log().size());
        }
    }

    uint64_t calls() const { return mCalls; }
    uint64_t flushes() const { return mFlushes; }

  private:
    void playRound(uint64_t doneBefore) {
        for (CaptureStep step; mReader.next(step);) {
            if (!mReader.errors().empty()) {
                throwChanged();
            }
            mProgress.show(doneBefore + mReader.log().position());
            playStep(std::move(step));
        }
        mThreads.wait();
        if (!mReader.isAtNotedLength()) {
            throwChanged();
        }
    }

    [[noreturn]] void throwChanged() const {
        throw std::runtime_error(mReader.place() + ": the log has changed since it was checked");
    }

    void playStep(CaptureStep step) {
        switch (step.kind) {
            case CaptureStep::Kind::kNothing:
                break;
            case CaptureStep::Kind::kBarrier:
                mThreads.wait();
                break;
            case CaptureStep::Kind::kSleep:
                std::this_thread::sleep_for(step.sleep);
                break;
            case CaptureStep::Kind::kCall:
                playCall(std::move(step));
                break;
        }
    }

    void playCall(CaptureStep step) {
        mCalls += 1;
        mFlushes += step.isFlush ? 1 : 0;
        auto task = [this, isFlush = step.isFlush, run = std::move(step.run)] {
            run(mManager);
            if (isFlush) {
                mReport.drain(mManager);
            }
        };
        if (step.thread.empty()) {
            task();
        } else {
            mThreads.post(step.thread, mReader.lineSize(), std::move(task));
        }
    }

    InfoSynchronizerManager& mManager = InfoSynchronizerManager::getInstance();
    StepReader& mReader;
    ServiceReport& mReport;
    Progress& mProgress;
    uint64_t mCalls = 0;
    uint64_t mFlushes = 0;
    NamedThreads mThreads;
};

// What the totals say of the switch; asked before the log is played, as its first call finds it.
std::string askSwitch() {
    void* answer = nullptr;
    InfoSynchronizerManager::getInstance().request(camInfosync::INFO_SYNC_TYPE_CMD,
                                                   "snapshotInfoCollectEnable", &answer);
    return static_cast<const char*>(answer);
}

TakeServiceCalls* findService() {
    void* library = dlopen(kOverlapServicePath, RTLD_NOW | RTLD_NOLOAD);
    return library != nullptr
                   ? reinterpret_cast<TakeServiceCalls*>(dlsym(library, kTakeServiceCalls))
                   : nullptr;
}

ExitStatus playInto(StepReader& reader, const ReplayOptions& options, std::FILE* json,
                    Progress& progress) {
    std::FILE* readable = options.quiet || json == stdout ? nullptr : stdout;
    ServiceReport report(findService(), json, readable);
    const std::string answer = askSwitch();
    Player player(reader, report, progress);
    player.play(options.repeat);
    if (readable != nullptr) {
        const Totals totals{answer, player.calls(), player.flushes(), report.reports(),
                            report.calls()};
        const std::string text = readableTotals(totals, InfoSynchronizerManager::getInstance());
        std::fputs(text.c_str(), readable);
    }
    if (!isWritten(json) || !isWritten(readable)) {
        std::cerr << "infosync-replay: cannot write the output: " << std::strerror(errno) << '\n';
        return kUnusable;
    }
    return kPlayed;
}

ExitStatus run(const ReplayOptions& options) {
    ExitStatus statusOfException = kUnusable;
    try {
        LogFile log(options.log);
        StepReader reader(log);
        const bool reportOnTerminal = options.json != "-" && isatty(STDOUT_FILENO) != 0;
        Progress progress(!options.quiet && !reportOnTerminal,
                          log.size() * (uint64_t{options.repeat} + 1));
        if (!checkLog(reader, progress)) {
            return kUnusable;
        }
        const OutputFile json(options.json, options.log);
        statusOfException = kFailed;
        return playInto(reader, options, json.get(), progress);
    } catch (const std::exception& error) {
        std::cerr << "infosync-replay: " << printable(error.what()) << '\n';
        return statusOfException;
    }
}

}  // namespace
}  // namespace replay

int infosyncPlay(const ReplayOptions* options) {
    return replay::run(*options);
}
