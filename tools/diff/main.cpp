// The program: compares the captures of two sides, and ends as diff does.

#include <signal.h>

#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <CLI/App.hpp>
#include <CLI/CLI.hpp>  // IWYU pragma: keep, the definitions that App.hpp leaves out
#include <CLI/Error.hpp>
#include <CLI/Validators.hpp>

#include "Differ.h"
#include "Pairing.h"
#include "Printable.h"
#include "Report.h"
#include "Side.h"
#include "StopSignals.h"
#include "TerminalStyle.h"
#include "Tolerance.h"

namespace {

enum ExitStatus : int {
    kSame = 0,
    kDifferent = 1,
    kTrouble = 2,
};

struct Settings {
    std::string a;
    std::string b;
    std::string by = "name";
    std::vector<std::string> tolerances = {"10%", "5ms"};
    bool isJson = false;
};

void addOptions(CLI::App& app, Settings& settings) {
    constexpr char kSides[] = "A capture log, a logcat, a bug report, or a folder of rows";
    app.add_option("a", settings.a, kSides)->required()->type_name("A");
    app.add_option("b", settings.b, "What is compared with it")->required()->type_name("B");
    app.add_option("--by", settings.by,
                   "How captures are paired: those of one name (the default), or in their order")
            ->check(CLI::IsMember({"name", "order"}))
            ->type_name("name|order");
    app.add_option("--tolerance", settings.tolerances,
                   "How far a duration may lie from A's: a part of it, a time, or both, of which "
                   "the larger counts (10%,5ms if not said)")
            ->delimiter(',')
            ->allow_extra_args(false)
            ->type_name("10%,5ms");
    app.add_flag("--json", settings.isJson,
                 "Write a line of JSON for each difference, and a last one that counts them");
    app.set_version_flag("--version", INFOSYNC_VERSION);
}

std::unique_ptr<diff::Report> reportOf(const Settings& settings) {
    if (settings.isJson) {
        return std::make_unique<diff::JsonReport>();
    }
    return std::make_unique<diff::TableReport>(settings.a, settings.b, view::styleOf(stdout));
}

// Both sides' rows are made at the same time.
auto openSides(const Settings& settings) {
    const diff::StopSignals signals;
    diff::Side a(settings.a);
    diff::Side b(settings.b);
    auto captures = a.open();
    return std::make_pair(std::move(captures), b.open());
}

int compare(const Settings& settings) {
    const diff::Tolerance tolerance = diff::toleranceOf(settings.tolerances);
    const auto [captures, others] = openSides(settings);
    const auto report = reportOf(settings);
    diff::Differ differ(tolerance, *report);
    differ.compare(*captures, *others, settings.by == "name" ? diff::By::kName : diff::By::kOrder);
    if (differ.counts().haveNothingInCommon()) {
        throw std::runtime_error(replay::printable(settings.a) + " and " +
                                 replay::printable(settings.b) +
                                 " have no captures in common: none of the one's names is one of "
                                 "the other's; --by order pairs them in their order");
    }
    report->write(stdout, differ.counts());
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        throw std::runtime_error("standard output cannot be written");
    }
    return differ.counts().areSame() ? kSame : kDifferent;
}

int run(int argc, char** argv) {
    CLI::App app("Says what is different between the captures of two sides.", "infosync-diff");
    Settings settings;
    addOptions(app, settings);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kSame : kTrouble;
    }
    return compare(settings);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        // Empty: the program that makes a side's rows has said it.
        if (*error.what() != '\0') {
            std::fprintf(stderr, "infosync-diff: %s\n", error.what());
        }
    }
    // What made the program end is what it ends by.
    if (diff::StopSignals::received() != 0) {
        raise(diff::StopSignals::received());
    }
    return kTrouble;
}
