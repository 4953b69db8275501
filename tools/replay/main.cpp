// The program: sets the environment as the options say, and only then loads the player and the
// library with it, which read the environment while they are being loaded.

#include <dlfcn.h>
#include <fcntl.h>
#include <stdlib.h>  // setenv, unsetenv
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <CLI/App.hpp>
#include <CLI/CLI.hpp>  // IWYU pragma: keep, the definitions that App.hpp leaves out
#include <CLI/Error.hpp>
#include <CLI/Validators.hpp>

#include "ExitStatus.h"
#include "LogFile.h"
#include "LogHeader.h"
#include "Printable.h"
#include "PropertyNames.h"
#include "ReplayOptions.h"
#include "Spelling.h"
#include "ViewOptions.h"

namespace {

struct Settings {
    ReplayOptions replay;
    std::vector<std::string> properties;
    std::string logLevel;
    bool service = false;
    bool noService = false;
};

std::string checkProperty(const std::string& text) {
    const size_t equals = text.find('=');
    const bool good = equals != std::string::npos && equals != 0 && text[0] != '#' &&
                      text.find_first_of(" \t\r\v\f") > equals &&
                      text.find('\n') == std::string::npos;
    return good ? "" : "must be KEY=VALUE on one line: " + text;
}

// A misspelt property would have no effect, and nobody would know.
void warnOfMisspelling(const Settings& settings) {
    const std::vector<std::string_view> known = {replay::kSupportedProperty,
                                                 replay::kForcedProperty};
    for (const std::string& property : settings.properties) {
        const std::string name = property.substr(0, property.find('='));
        const std::string guess = replay::didYouMean(name, known);
        if (!guess.empty() && std::find(known.begin(), known.end(), name) == known.end()) {
            std::fprintf(stderr, "infosync-replay: --property: the library does not read %s%s\n",
                         replay::printable(name).c_str(), guess.c_str());
        }
    }
}

void addOptions(CLI::App& app, Settings& settings) {
    app.add_option("log", settings.replay.path, "The capture log, or - for standard input")
            ->required()
            ->type_name("LOG");
    auto* json = app.add_option("--json", settings.replay.json,
                                "Write each call that the service received to FILE as a line of "
                                "JSON; - writes "
                                "them to standard output in place of the report")
                         ->type_name("FILE");
    app.add_flag("--records", settings.replay.records,
                 "With --json: write each record that is flushed as a line, after its report")
            ->needs(json);
    app.add_option("--repeat", settings.replay.repeat,
                   "Play the log N times; image names end in #2 in the second round, and so on")
            ->check(CLI::Range(uint32_t{1}, UINT32_MAX - 1))
            ->type_name("N");
    app.add_option("--property", settings.properties, "Set a system property; may be repeated")
            ->check(checkProperty)
            ->type_name("KEY=VALUE")
            ->allow_extra_args(false);
    app.add_option("--answer", settings.replay.answer,
                   "What the service answers to every command, instead of \"enabled\"")
            ->type_name("TEXT");
    app.add_option(
               "--image", settings.replay.view.images,
               "Play only the captures of this name, and what belongs to none, and show the full "
               "report on them; may be repeated")
            ->type_name("NAME")
            ->allow_extra_args(false);
    app.add_flag("--timing", settings.replay.timing, "Keep the gaps that were recorded");
    app.add_flag("--free", settings.replay.free,
                 "Let the threads of a recording run freely, each in its own order");
    CLI::Option* noService =
            app.add_flag("--no-service", settings.noService, "Play without an overlap library");
    app.add_flag("--service", settings.service,
                 "Play with an overlap library, also if there was none at the recording")
            ->excludes(noService);
    app.add_option("--log-level", settings.logLevel,
                   "The least level that the library logs to standard error, instead of warn")
            ->check(CLI::IsMember({"debug", "info", "warn", "error", "silent"}))
            ->type_name("LEVEL");
    app.add_flag("--quiet", settings.replay.view.quiet, "No report and no progress bar");
    view::addViewOptions(app, settings.replay.view);
    app.set_version_flag("--version", INFOSYNC_VERSION);
}

const char* levelNumber(const std::string& name) {
    return name == "debug"   ? "3"
           : name == "info"  ? "4"
           : name == "warn"  ? "5"
           : name == "error" ? "6"
                             : "8";
}

// The header's properties win over the environment's, and the options' over both.
void setProperties(const Settings& settings) {
    const char* before = std::getenv("INFOSYNC_HOST_PROPERTIES");
    std::string properties = before != nullptr ? before : "";
    for (const auto& [key, value] : settings.replay.header.properties) {
        properties += '\n' + key + (value ? "=true" : "=false");
    }
    for (const std::string& property : settings.properties) {
        properties += '\n' + property;
    }
    if (!properties.empty()) {
        setenv("INFOSYNC_HOST_PROPERTIES", properties.c_str(), 1);
    }
}

void setEnvironment(const Settings& settings) {
    setProperties(settings);
    if (settings.service) {
        unsetenv("INFOSYNC_HOST_NO_SERVICE");
    } else if (settings.noService || !settings.replay.header.service) {
        setenv("INFOSYNC_HOST_NO_SERVICE", "1", 1);
    }
    if (!settings.logLevel.empty()) {
        setenv("INFOSYNC_LOG_LEVEL", levelNumber(settings.logLevel), 1);
    }
}

// Opens /dev/null for each standard stream that is closed. Otherwise the next file to be opened
// would get that stream's descriptor, and what is printed would be written into the file. Opened
// for reading only, so that printing to it fails as it would to the closed stream.
void fillStandardStreams() {
    int descriptor = -1;
    do {
        descriptor = open("/dev/null", O_RDONLY);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0) {
        close(descriptor);
    }
}

// The player lies beside the program in the build folder, and in a folder of its own once both
// are installed. A full path, since dlopen is hostroot's, and the loader would search for a bare
// name where hostroot's libraries lie.
std::string playerPath() {
    std::error_code error;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    const auto beside = folder / INFOSYNC_PLAYER;
    return std::filesystem::exists(beside, error)
                   ? beside
                   : folder / INFOSYNC_PLAYER_FOLDER / INFOSYNC_PLAYER;
}

// Loads the player. The library prints a line to standard output meanwhile, which helps to find
// out why a service is not found, and is nothing that a program that reads the output knows.
void* loadPlayer(bool showsLine) {
    const int output = dup(STDOUT_FILENO);
    const int instead = showsLine ? dup(STDERR_FILENO) : open("/dev/null", O_WRONLY);
    if (instead >= 0) {
        dup2(instead, STDOUT_FILENO);
        close(instead);
    }
    void* player = dlopen(playerPath().c_str(), RTLD_NOW);
    std::cout.flush();
    dup2(output, STDOUT_FILENO);
    close(output);
    return player;
}

int play(const ReplayOptions& options, bool showsLine) {
    void* player = loadPlayer(showsLine);
    auto* entry = player != nullptr ? reinterpret_cast<InfosyncPlay*>(dlsym(player, kInfosyncPlay))
                                    : nullptr;
    if (entry == nullptr) {
        std::fprintf(stderr, "infosync-replay: cannot load the player: %s\n", dlerror());
        return replay::kFailed;
    }
    return entry(&options);
}

// Opens the log and reads what it says of its own playing, then plays it.
int openAndPlay(Settings& settings) {
    ReplayOptions& options = settings.replay;
    try {
        replay::LogFile log(options.path);
        options.log = &log;
        if (!replay::readHeader(log, options.header)) {
            return replay::kUnusable;
        }
        setEnvironment(settings);
        return play(options, settings.logLevel == "debug");
    } catch (const std::exception& error) {
        const std::string text = replay::printable(error.what());
        std::fprintf(stderr, "infosync-replay: %s\n", text.c_str());
        return replay::kUnusable;
    }
}

int run(int argc, char** argv) {
    CLI::App app("Plays a capture log through the library and shows what the service received.",
                 "infosync-replay");
    Settings settings;
    settings.replay.view.notesAreTold = true;
    addOptions(app, settings);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? replay::kPlayed : replay::kUnusable;
    }
    warnOfMisspelling(settings);
    // Nothing else is played, in any round.
    settings.replay.view.inFull = !settings.replay.view.images.empty();
    return openAndPlay(settings);
}

}  // namespace

int main(int argc, char** argv) {
    fillStandardStreams();
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "infosync-replay: %s\n", error.what());
        return replay::kFailed;
    }
}
