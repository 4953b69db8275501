// Checks a capture log, plays it through the library, and sums up.

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>

#include "CaptureLog.h"
#include "CaptureObserver.h"
#include "CollectionState.h"
#include "ExitStatus.h"
#include "InfoSyncType.h"
#include "InfoSynchronizerManager.h"
#include "LogCheck.h"
#include "OutputFile.h"
#include "OverlapService.h"
#include "Playback.h"
#include "Printable.h"
#include "Progress.h"
#include "PropertyNames.h"
#include "ReplayOptions.h"
#include "ServiceAnswers.h"
#include "ServiceReport.h"
#include "StepReader.h"
#include "View.h"
#include "Views.h"

namespace replay {
namespace {

using camInfosync::InfoSynchronizerManager;

// The service's function of that name; null without a service.
template <typename Function>
Function* findInService(const char* name) {
    void* library = dlopen(kOverlapServicePath, RTLD_NOW | RTLD_NOLOAD);
    return library != nullptr ? reinterpret_cast<Function*>(dlsym(library, name)) : nullptr;
}

// What the service answers to whether snapshots are collected, before the log is played. With a
// header nothing is asked but what was asked at the recording.
CollectionAnswer askSwitch(const LogFacts& facts, const ReplayOptions& options) {
    if (!options.header.exists()) {
        void* answer = nullptr;
        InfoSynchronizerManager::getInstance().request(camInfosync::INFO_SYNC_TYPE_CMD,
                                                       kCollectionKey, &answer);
        return {static_cast<const char*>(answer), 0};
    }
    ServiceAnswers answers(options.answer);
    answers.restart(options.header.answers);
    if (options.answer) {
        return {answers.of(kCollectionKey), 0};
    }
    if (options.header.answers.count(kCollectionKey) == 0 && facts.firstAnswer) {
        return {*facts.firstAnswer, facts.laterAnswers};
    }
    return {answers.of(kCollectionKey), facts.laterAnswers};
}

view::Session sessionOf(const LogFacts& facts, const ReplayOptions& options,
                        const CollectionAnswer& answer) {
    view::Session session;
    session.sources = {options.path};
    session.clock = facts.callsWithTime != 0 ? view::Clock::kMonotonic : view::Clock::kNone;
    const LogHeader& header = options.header;
    if (header.startMonotonic && header.startReal) {
        session.toReal = *header.startReal - *header.startMonotonic;
    }
    session.switches = {{kSupportedProperty, isSupported() ? "true" : "not true"},
                        {kForcedProperty, isForced() ? "true" : "not true"},
                        {"service", hasService() ? "present" : "none"},
                        {"collection", collectionState(answer)}};
    session.notes = facts.notes;
    return session;
}

// What is to be shown needs an observer; without one the log is played quicker.
bool needsObserver(const ReplayOptions& options, std::FILE* terminal) {
    const view::ViewOptions& view = options.view;
    return options.records || view.failOnFindings || !view.trace.empty() || !view.html.empty() ||
           (terminal != nullptr && !view.quiet);
}

// Shows the service's calls to the observers for as long as it lives.
class Watching {
  public:
    Watching(SetWatch* set, bool isWanted) : mSet(isWanted ? set : nullptr) {
        if (mSet != nullptr) {
            mSet(CaptureObserver::watch);
        }
    }
    ~Watching() {
        if (mSet != nullptr) {
            mSet(nullptr);
        }
    }
    Watching(const Watching&) = delete;
    Watching& operator=(const Watching&) = delete;

  private:
    SetWatch* const mSet;
};

// One playing of a log, and what is shown of it.
class Showing {
  public:
    // All must outlive this.
    Showing(StepReader& reader, const LogFacts& facts, const ReplayOptions& options,
            view::View& views, std::FILE* json, bool isObserved)
        : mFacts(facts),
          mOptions(options),
          mReport(findInService<TakeServiceCalls>(kTakeServiceCalls), json),
          mSetWatch(findInService<SetWatch>(kSetWatch)),
          mPlayback(
                  reader, facts, options, findInService<SetAnswers>(kSetAnswers),
                  [this](const auto& step, const auto& call) { around(step, call); },
                  [](const auto& key, const auto* answer) {
                      CaptureObserver::answered(key, answer);
                  }) {
        const CollectionAnswer answer = askSwitch(facts, options);
        if (isObserved) {
            const CaptureObserver::Settings settings{
                    options.records, facts.calls == facts.callsWithTime,
                    options.header.moreCut != 0, mSetWatch != nullptr};
            mObserver.emplace(views, sessionOf(facts, options, answer), settings);
        }
    }

    void play(Progress& progress) {
        const Watching watching(mSetWatch, mObserver.has_value());
        mPlayback.play(progress);
    }

    // Throws what a view has thrown.
    void finish() {
        if (mObserver) {
            mObserver->finish(
                    {mPlayback.calls(), mPlayback.flushes(), mReport.reports(), mReport.calls()});
        }
    }

  private:
    void around(const CaptureStep& step, const std::function<void()>& call) {
        if (mObserver) {
            mObserver->around(step, call);
        } else {
            call();
        }
        if (step.reports) {
            mReport.drain();
        }
    }

    const LogFacts& mFacts;
    const ReplayOptions& mOptions;
    ServiceReport mReport;
    SetWatch* const mSetWatch;
    std::optional<CaptureObserver> mObserver;
    Playback mPlayback;  // last: its threads use the others
};

ExitStatus playInto(StepReader& reader, const LogFacts& facts, const ReplayOptions& options,
                    std::FILE* json, Progress& progress) {
    ExitStatus statusOfException = kUnusable;
    std::FILE* terminal = json == stdout ? nullptr : stdout;
    try {
        view::Views views(options.view, terminal);
        Showing showing(reader, facts, options, views, json, needsObserver(options, terminal));
        statusOfException = kFailed;
        showing.play(progress);
        statusOfException = kUnusable;
        showing.finish();
        if (!isWritten(json) || !isWritten(terminal)) {
            throw std::runtime_error(std::string("cannot write the output: ") +
                                     std::strerror(errno));
        }
        const bool fails = options.view.failOnFindings && views.hasFindings();
        return fails ? kFindings : kPlayed;
    } catch (const std::exception& error) {
        std::cerr << "infosync-replay: " << printable(error.what()) << '\n';
        return statusOfException;
    }
}

ExitStatus run(const ReplayOptions& options) {
    try {
        StepReader reader(*options.log, options.header);
        const bool reportOnTerminal = options.json != "-" && isatty(STDOUT_FILENO) != 0;
        Progress progress(!options.view.quiet && !reportOnTerminal,
                          options.log->size() * (uint64_t{options.repeat} + 1));
        const auto facts = checkLog(reader, options, progress);
        if (!facts) {
            return kUnusable;
        }
        const OutputFile json(options.json, options.path);
        return playInto(reader, *facts, options, json.get(), progress);
    } catch (const std::exception& error) {
        std::cerr << "infosync-replay: " << printable(error.what()) << '\n';
        return kUnusable;
    }
}

}  // namespace
}  // namespace replay

int infosyncPlay(const ReplayOptions* options) {
    return replay::run(*options);
}
