#include "ViewOptions.h"

#include <string>

#include <CLI/App.hpp>
#include <CLI/CLI.hpp>  // IWYU pragma: keep, the definitions that App.hpp leaves out
#include <CLI/Option.hpp>
#include <CLI/Validators.hpp>

namespace view {

namespace {

void addRowOptions(CLI::App& app, RowOptions& options) {
    CLI::Option* rows = app.add_option("--rows", options.folder,
                                       "Write the captures as rows for engines into the folder DIR")
                                ->type_name("DIR");
    app.add_option("--run-id", options.runId, "What tells these rows from those of other runs")
            ->needs(rows)
            ->type_name("TEXT");
    app.add_option("--device", options.device, "The phone, for the rows")
            ->needs(rows)
            ->type_name("TEXT");
    app.add_option("--build", options.build, "What runs on the phone, for the rows")
            ->needs(rows)
            ->type_name("TEXT");
}

void addStatsOptions(CLI::App& app, ViewOptions& options) {
    CLI::Option* stats =
            app.add_flag("--stats", options.stats,
                         "Show counts and percentiles of all captures in place of the captures");
    for (const char* other : {"--summary", "--failed", "--sort"}) {
        stats->excludes(app.get_option(other));
    }
    app.add_option(
               "--by", options.statsBy,
               "With --stats: group by the values of a column of rows, such as cam_mode or node")
            ->needs(stats)
            ->type_name("COLUMN");
    app.add_option("--stats-json", options.statsJson, "With --stats: write them as JSON to FILE")
            ->needs(stats)
            ->type_name("FILE");
}

}  // namespace

void addViewOptions(CLI::App& app, ViewOptions& options) {
    app.add_flag("--summary", options.summary, "Show a line for each capture");
    app.add_flag("--failed", options.failed, "Show the full report on captures that have failed");
    app.add_option("--sort", options.sort, "What the summary's lines are sorted by, worst first")
            ->check(CLI::IsMember({"time", "findings"}))
            ->type_name("KEY");
    app.add_option("--trace", options.trace, "Write a trace for trace viewers to FILE")
            ->type_name("FILE");
    app.add_option("--html", options.html, "Write a page to look at to FILE")->type_name("FILE");
    addRowOptions(app, options.rows);
    addStatsOptions(app, options);
    app.add_option_function<std::string>(
               "--fail-on",
               [&options](const std::string& what) { options.failOnFindings = what == "findings"; },
               "Exit with status 3 if a capture has failed or a call had no effect")
            ->check(CLI::IsMember({"findings"}))
            ->type_name("findings");
}

}  // namespace view
