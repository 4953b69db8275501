// The program: counts the captures in folders of rows.

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <CLI/App.hpp>
#include <CLI/CLI.hpp>  // IWYU pragma: keep, the definitions that App.hpp leaves out
#include <CLI/Error.hpp>

#include "Printable.h"
#include "Row.h"
#include "RowReader.h"
#include "Statistics.h"
#include "StatisticsJson.h"
#include "StatisticsText.h"
#include "TerminalStyle.h"

namespace {

enum ExitStatus : int {
    kShown = 0,
    kFailed = 1,
    kUnusable = 2,  // options or input that cannot be used
};

struct Settings {
    std::vector<std::string> folders;
    std::string by;
    bool isJson = false;
};

void addOptions(CLI::App& app, Settings& settings) {
    app.add_option("rows", settings.folders,
                   "Folders that --rows of infosync-replay or infosync-logcat has written")
            ->required()
            ->type_name("ROWS");
    app.add_option("--by", settings.by,
                   "Group by the values of a column, such as build, cam_mode or node")
            ->type_name("COLUMN");
    app.add_flag("--json", settings.isJson, "Write JSON instead of tables");
    app.set_version_flag("--version", INFOSYNC_VERSION);
}

// Returns how many rows there were.
template <typename Row>
int64_t count(const std::string& path, stats::Statistics& statistics) {
    rows::RowReader<Row> reader(path);
    int64_t number = 0;
    for (Row row; reader.next(row); ++number) {
        statistics.add(row);
    }
    return number;
}

// The sum of a column over a folder's runs; nothing if one of them does not tell it.
rows::Whole toldOf(const rows::RowFolder& folder, rows::Whole rows::RunRow::*column) {
    rows::RunReader reader(folder.run);
    int64_t sum = 0;
    for (rows::RunRow run; reader.next(run);) {
        const rows::Whole told = run.*column;
        if (!told || __builtin_add_overflow(sum, *told, &sum)) {
            return std::nullopt;
        }
    }
    return sum;
}

void requireAll(const std::string& path, int64_t rows, const rows::Whole& told) {
    if (told && *told != rows) {
        throw std::runtime_error(replay::printable(path) + ": has " + std::to_string(rows) +
                                 " rows, where run.ndjson tells of " + std::to_string(*told));
    }
}

ExitStatus show(const Settings& settings) {
    stats::Statistics statistics(settings.by);
    for (const std::string& path : settings.folders) {
        const rows::RowFolder folder = rows::rowFolder(path);
        const auto captures = count<rows::CaptureRow>(folder.captures, statistics);
        const auto nodes = count<rows::NodeRow>(folder.nodes, statistics);
        requireAll(folder.captures, captures, toldOf(folder, &rows::RunRow::captures));
        requireAll(folder.nodes, nodes, toldOf(folder, &rows::RunRow::nodes));
    }
    const std::string text = settings.isJson
                                     ? stats::statisticsJson(statistics)
                                     : stats::statisticsText(statistics, view::styleOf(stdout));
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() ||
        std::fflush(stdout) != 0) {
        std::fprintf(stderr, "infosync-stats: cannot write the output: %s\n", std::strerror(errno));
        return kFailed;
    }
    return kShown;
}

int run(int argc, char** argv) {
    CLI::App app("Counts captures and nodes in rows, and how long they took.", "infosync-stats");
    Settings settings;
    addOptions(app, settings);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kShown : kUnusable;
    }
    try {
        return show(settings);
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "infosync-stats: %s\n", error.what());
        return kUnusable;
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "infosync-stats: %s\n", error.what());
        return kFailed;
    }
}
