// Shows a session on the terminal: what went wrong, then the captures, then the totals.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>

#include "Capture.h"
#include "FindingText.h"
#include "SessionTotals.h"
#include "Summary.h"
#include "TerminalStyle.h"
#include "TextStore.h"
#include "View.h"
#include "ViewOptions.h"

namespace view {

// Up to 20 captures are shown in full, more of them in a line each. Nothing is written before the
// session is finished; its memory grows by a short row for each capture.
class TerminalView : public View {
  public:
    TerminalView(const ViewOptions& options, std::FILE* file, const TerminalStyle& style);

    void add(const Capture& capture, const Session& session) override;
    void finish(const Session& session) override;

  private:
    bool isWanted(const Capture& capture) const;
    bool choosesReports() const {
        return mOptions.failed || mOptions.inFull || !mOptions.images.empty();
    }
    void write(const std::string& text);
    void writeFindings(const Session& session);
    void writeCaptures();

    const ViewOptions mOptions;
    std::FILE* const mFile;
    const TerminalStyle mStyle;
    WorstFindings mWorst;
    Summary mSummary;
    SessionTotals mTotals;
    TextStore mTexts;
    std::multimap<uint64_t, TextStore::Slot> mReports;  // by the capture's number
};

}  // namespace view
