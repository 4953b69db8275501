// Shows the statistics of a session's captures.

#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "Capture.h"
#include "NewFile.h"
#include "Statistics.h"
#include "View.h"
#include "ViewOptions.h"

namespace stats {

// Its memory does not grow with the captures.
class StatsView : public view::View {
  public:
    // The table is written to `terminal`, unless it is null, and JSON to the file that the options
    // name. Throws std::runtime_error with a text for the user.
    StatsView(const view::ViewOptions& options, std::FILE* terminal);

    void add(const view::Capture& capture, const view::Session& session) override;
    void finish(const view::Session& session) override;

  private:
    const bool mNotesAreTold;
    std::FILE* const mTerminal;
    view::RowOptions mOrigin;
    std::unique_ptr<view::NewFile> mJson;  // null: not asked for
    Statistics mStatistics;
};

}  // namespace stats
