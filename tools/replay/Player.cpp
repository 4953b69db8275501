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
#include <string>

#include "CaptureLog.h"
#include "ExitStatus.h"
#include "InfoSyncType.h"
#include "InfoSynchronizerManager.h"
#include "LogCheck.h"
#include "OutputFile.h"
#include "OverlapService.h"
#include "Playback.h"
#include "Printable.h"
#include "Progress.h"
#include "ReplayOptions.h"
#include "ServiceAnswers.h"
#include "ServiceReport.h"
#include "StepReader.h"
#include "Totals.h"

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

ExitStatus playInto(StepReader& reader, const LogFacts& facts, const ReplayOptions& options,
                    std::FILE* json, Progress& progress) {
    std::FILE* readable = options.quiet || json == stdout ? nullptr : stdout;
    InfoSynchronizerManager& manager = InfoSynchronizerManager::getInstance();
    ServiceReport report(findInService<TakeServiceCalls>(kTakeServiceCalls), json, readable);
    const auto around = [&](const CaptureStep& step, const std::function<void()>& call) {
        call();
        if (step.reports) {
            report.drain(manager);
        }
    };
    Playback playback(reader, facts, options, findInService<SetAnswers>(kSetAnswers), around);
    const CollectionAnswer answer = askSwitch(facts, options);
    playback.play(progress);
    if (readable != nullptr) {
        const Totals totals{answer, playback.calls(), playback.flushes(), report.reports(),
                            report.calls()};
        const std::string text = readableTotals(totals, manager);
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
        StepReader reader(*options.log, options.header);
        const bool reportOnTerminal = options.json != "-" && isatty(STDOUT_FILENO) != 0;
        Progress progress(!options.quiet && !reportOnTerminal,
                          options.log->size() * (uint64_t{options.repeat} + 1));
        const auto facts = checkLog(reader, options, progress);
        if (!facts) {
            return kUnusable;
        }
        const OutputFile json(options.json, options.path);
        statusOfException = kFailed;
        return playInto(reader, *facts, options, json.get(), progress);
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
