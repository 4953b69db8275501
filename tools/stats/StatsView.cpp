#include "StatsView.h"

#include <cstdio>
#include <memory>
#include <string>

#include "Capture.h"
#include "FindingText.h"
#include "NewFile.h"
#include "Row.h"
#include "RowsOf.h"
#include "StatisticsJson.h"
#include "StatisticsText.h"
#include "TerminalStyle.h"
#include "TerminalText.h"
#include "View.h"
#include "ViewOptions.h"

namespace stats {

StatsView::StatsView(const view::ViewOptions& options, std::FILE* terminal)
    : mNotesAreTold(options.notesAreTold),
      mTerminal(terminal),
      mOrigin(options.rows),
      mJson(options.statsJson.empty() ? nullptr
                                      : std::make_unique<view::NewFile>(options.statsJson)),
      mStatistics(options.statsBy) {}

void StatsView::add(const view::Capture& capture, const view::Session& session) {
    if (mOrigin.runId.empty() && !session.sources.empty()) {
        mOrigin.runId = session.sources.front();
    }
    const rows::CaptureRow row = view::captureRowOf(capture, session, mOrigin);
    mStatistics.add(row);
    for (const rows::NodeRow& node : view::nodeRowsOf(capture, row)) {
        mStatistics.add(node);
    }
}

void StatsView::finish(const view::Session& session) {
    if (mJson != nullptr) {
        mJson->refuse(session.sources);
        mJson->write(statisticsJson(mStatistics));
        mJson->finish();
    }
    if (mTerminal == nullptr) {
        return;
    }
    const view::TerminalStyle style = view::styleOf(mTerminal);
    std::string text;
    for (const std::string& note : session.notes) {
        text += mNotesAreTold ? "" : "note: " + view::safe(note) + '\n';
    }
    const std::string findings = view::sessionFindingLines(session, 2, style);
    text += findings.empty() ? "" : "findings\n" + findings + '\n';
    text += statisticsText(mStatistics, style);
    std::fwrite(text.data(), 1, text.size(), mTerminal);
}

}  // namespace stats
