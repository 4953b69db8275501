// What the user wants to see, and where.

#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}  // namespace CLI

namespace view {

struct ViewOptions {
    bool summary = false;  // a line for each capture, however few there are
    bool failed = false;   // the full report on those that have failed
    std::string sort;      // of the summary: "time", "findings", or empty: as they were registered
    std::vector<std::string> images;  // the full report on these
    bool inFull = false;              // the full report on all, however many
    bool quiet = false;               // nothing on the terminal
    bool notesAreTold = false;        // standard error has the session's notes already
    std::string trace;                // files to write; empty: none
    std::string html;
    bool failOnFindings = false;  // exit status 3 if a capture has failed or a call had no effect
};

// Adds --summary, --failed, --sort, --trace, --html and --fail-on; what else there is belongs to
// the tool.
void addViewOptions(CLI::App& app, ViewOptions& options);

}  // namespace view
