// The program: reads logs and shows what the library's lines in them tell.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include <CLI/App.hpp>
#include <CLI/CLI.hpp>  // IWYU pragma: keep, the definitions that App.hpp leaves out
#include <CLI/Error.hpp>

#include "Input.h"
#include "LogcatReader.h"
#include "NewFile.h"
#include "Printable.h"
#include "ViewOptions.h"
#include "Views.h"

namespace {

enum ExitStatus : int {
    kShown = 0,
    kFailed = 1,
    kUnusable = 2,  // options, input or output that cannot be used
    kFindings = 3,  // asked for by --fail-on
};

struct Settings {
    std::vector<std::string> logs;
    bool isPrintable = false;
    view::ViewOptions views;
};

void addOptions(CLI::App& app, Settings& settings) {
    app.add_option("logs", settings.logs,
                   "Logcats and bug reports, as text or zip, in the order in which they were "
                   "taken; - is standard input")
            ->required()
            ->type_name("FILE");
    app.add_option("--image", settings.views.images,
                   "Show the full report on the captures of this name; may be repeated")
            ->type_name("NAME")
            ->allow_extra_args(false);
    view::addViewOptions(app, settings.views);
    app.get_option("--stats")->excludes(app.get_option("--image"));
    app.add_flag("--printable", settings.isPrintable,
                 "The logs were written by logcat -v printable; bug reports say so themselves");
    app.add_flag("--quiet", settings.views.quiet, "Nothing on the terminal");
    app.set_version_flag("--version", INFOSYNC_VERSION);
}

int show(const Settings& settings) {
    std::vector<std::unique_ptr<logcat::Input>> inputs;
    inputs.reserve(settings.logs.size());
    for (const std::string& log : settings.logs) {
        inputs.push_back(logcat::openInput(log));
    }
    view::Views views(settings.views, stdout);
    logcat::LogcatReader reader(views);
    if (settings.isPrintable) {
        reader.setPrintable();
    }
    for (size_t i = 0; i < inputs.size(); ++i) {
        reader.read(*inputs[i], settings.logs[i]);
        inputs[i].reset();
    }
    reader.finish();
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        throw view::WriteFailure(std::string("cannot write the output: ") + std::strerror(errno));
    }
    if (settings.views.quiet && !reader.hasMessages()) {
        std::fprintf(stderr, "infosync-logcat: there are no lines of the library\n");
    }
    for (const std::string& image : views.missingImages()) {
        std::fprintf(stderr, "infosync-logcat: %s: no capture has this name\n",
                     replay::printable(image).c_str());
    }
    if (!views.missingImages().empty()) {
        return kUnusable;
    }
    return settings.views.failOnFindings && views.hasFindings() ? kFindings : kShown;
}

int run(int argc, char** argv) {
    CLI::App app("Shows the captures that a logcat or a bug report tells of.", "infosync-logcat");
    Settings settings;
    addOptions(app, settings);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kShown : kUnusable;
    }
    try {
        return show(settings);
    } catch (const view::WriteFailure& error) {
        std::fprintf(stderr, "infosync-logcat: %s\n", replay::printable(error.what()).c_str());
        return kFailed;
    } catch (const std::exception& error) {
        const std::string text = replay::printable(error.what());
        std::fprintf(stderr, "infosync-logcat: %s\n", text.c_str());
        return kUnusable;
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "infosync-logcat: %s\n", error.what());
        return kFailed;
    }
}
