#include "ObservedPlayback.h"

#include <dlfcn.h>

#include <cstdio>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "CaptureLog.h"
#include "CaptureObserver.h"
#include "CollectionState.h"
#include "InfoSyncType.h"
#include "InfoSynchronizerManager.h"
#include "LogCheck.h"
#include "LogHeader.h"
#include "OverlapService.h"
#include "Printable.h"
#include "PropertyNames.h"
#include "ReplayOptions.h"
#include "ServiceAnswers.h"
#include "StepReader.h"
#include "View.h"

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
    const std::string first = answers.of(kCollectionKey);
    const bool changes = facts.firstAnswer && *facts.firstAnswer != first;
    return {first, facts.laterAnswers + (changes ? 1 : 0)};
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

}  // namespace

ObservedPlayback::ObservedPlayback(StepReader& reader, const LogFacts& facts,
                                   const ReplayOptions& options, std::FILE* json, view::View* view)
    : mReport(findInService<TakeServiceCalls>(kTakeServiceCalls), json),
      mSetWatch(findInService<SetWatch>(kSetWatch)),
      mPlayback(
              reader, facts, options, findInService<SetAnswers>(kSetAnswers),
              [this](const auto& step, const auto& call) { around(step, call); },
              CaptureObserver::answered) {
    const CollectionAnswer answer = askSwitch(facts, options);
    if (view == nullptr) {
        return;
    }
    const CaptureObserver::Settings settings{options.records, facts.calls == facts.callsWithTime,
                                             options.header.moreCut != 0, facts.goesOn,
                                             hasService() && mSetWatch == nullptr};
    mObserver.emplace(*view, sessionOf(facts, options, answer), settings);
    if (mSetWatch != nullptr) {
        mSetWatch(CaptureObserver::watch);
    }
}

ObservedPlayback::~ObservedPlayback() {
    if (mSetWatch != nullptr) {
        mSetWatch(nullptr);
    }
}

void ObservedPlayback::around(const CaptureStep& step, const std::function<void()>& call) {
    if (mObserver) {
        mObserver->around(step, call);
    } else {
        call();
    }
    if (step.reports) {
        mReport.drain();
    }
}

void ObservedPlayback::finish() {
    if (!mObserver) {
        return;
    }
    const std::vector<std::string> notes = mObserver->finish(
            {mPlayback.calls(), mPlayback.flushes(), mReport.reports(), mReport.calls()});
    for (const std::string& note : notes) {
        std::cerr << printable(note) << '\n';
    }
}

}  // namespace replay
