// Checks a capture log, plays it through the library, and shows it.

#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

#include "ExitStatus.h"
#include "LogCheck.h"
#include "NewFile.h"
#include "ObservedPlayback.h"
#include "OutputFile.h"
#include "Printable.h"
#include "Progress.h"
#include "ReplayOptions.h"
#include "StepReader.h"
#include "ViewOptions.h"
#include "Views.h"

namespace replay {
namespace {

// What is to be shown needs an observer; without one the log is played quicker.
bool needsObserver(const ReplayOptions& options, std::FILE* terminal) {
    const view::ViewOptions& view = options.view;
    return options.records || view.failOnFindings || !view.trace.empty() || !view.html.empty() ||
           (terminal != nullptr && !view.quiet);
}

// The service's calls are written while the log is played, and views take the place of a file.
void checkNames(const ReplayOptions& options) {
    for (const std::string& file : {options.view.trace, options.view.html}) {
        if (!options.json.empty() && !file.empty() && view::nameOneFile(options.json, file)) {
            throw std::runtime_error(options.json +
                                     ": cannot be both the service's calls and a view");
        }
    }
}

ExitStatus playInto(StepReader& reader, const LogFacts& facts, const ReplayOptions& options,
                    std::FILE* json, Progress& progress) {
    ExitStatus statusOfException = kUnusable;
    std::FILE* terminal = json == stdout ? nullptr : stdout;
    try {
        view::Views views(options.view, terminal);
        ObservedPlayback playback(reader, facts, options, json,
                                  needsObserver(options, terminal) ? &views : nullptr);
        statusOfException = kFailed;
        playback.play(progress);
        statusOfException = kUnusable;
        playback.finish();
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
        checkNames(options);
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
