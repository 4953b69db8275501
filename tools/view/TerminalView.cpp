#include "TerminalView.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string>

#include "Capture.h"
#include "CaptureReport.h"
#include "FindingText.h"
#include "Summary.h"
#include "TerminalStyle.h"
#include "TerminalText.h"
#include "TimeLine.h"
#include "View.h"
#include "ViewOptions.h"

namespace view {
namespace {

constexpr size_t kMostInFull = 20;

}  // namespace

TerminalView::TerminalView(const ViewOptions& options, std::FILE* file, const TerminalStyle& style)
    : mOptions(options), mFile(file), mStyle(style), mSummary(options.sort, style) {}

// Whether the full report on the capture is, or may yet be, asked for.
bool TerminalView::isWanted(const Capture& capture) const {
    const auto& images = mOptions.images;
    return mOptions.inFull || (mOptions.failed && capture.hasFailed()) ||
           std::find(images.begin(), images.end(), capture.name) != images.end() ||
           (!choosesReports() && !mOptions.summary && mSummary.size() <= kMostInFull);
}

void TerminalView::add(const Capture& capture, const Session& session) {
    mWorst.add(capture, session);
    mTotals.add(capture);
    mSummary.add(capture);
    if (isWanted(capture)) {
        mReports.emplace(capture.number,
                         mTexts.add(captureReport(capture, session, timeLineOf(capture), mStyle)));
    }
    if (!choosesReports() && mSummary.size() > kMostInFull) {
        mReports.clear();
        mTexts.clear();
    }
}

void TerminalView::write(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), mFile);
}

void TerminalView::writeFindings(const Session& session) {
    std::string text;
    if (!mOptions.notesAreTold) {
        for (const std::string& note : session.notes) {
            text += "note: " + safe(note) + '\n';
        }
    }
    std::string findings = sessionFindingLines(session, 2, mStyle);
    // A single report begins with the capture's findings.
    if (mSummary.size() > 1 || mReports.empty()) {
        findings += mWorst.lines(2, mStyle);
    }
    text += findings.empty() ? "" : "findings\n" + findings;
    write(text.empty() ? "" : text + '\n');
}

void TerminalView::writeCaptures() {
    if (mSummary.size() > 1 || (mSummary.size() == 1 && mReports.empty())) {
        write("captures\n");
        mSummary.write(mFile);
        write("\n");
    }
    for (const auto& [number, slot] : mReports) {
        write(mTexts.at(slot));
    }
}

void TerminalView::finish(const Session& session) {
    writeFindings(session);
    writeCaptures();
    write(mTotals.line(session) + "\n\n" + mTotals.text(session));
}

}  // namespace view
