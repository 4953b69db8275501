#include "Views.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <vector>

#include "Capture.h"
#include "Finding.h"
#include "NewFile.h"
#include "Page.h"
#include "PageParts.h"
#include "TerminalStyle.h"
#include "TerminalView.h"
#include "Trace.h"
#include "View.h"
#include "ViewOptions.h"

namespace view {
namespace {

bool haveTrouble(const std::vector<Finding>& findings) {
    return std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
        return meansFailure(finding.kind) || meansNoEffect(finding.kind);
    });
}

}  // namespace

Views::Views(const ViewOptions& options, std::FILE* terminal)
    : mMissingImages(options.images.begin(), options.images.end()) {
    if (terminal != nullptr && !options.quiet) {
        mViews.push_back(std::make_unique<TerminalView>(options, terminal, styleOf(terminal)));
    }
    if (!options.trace.empty() && !options.html.empty() &&
        nameOneFile(options.trace, options.html)) {
        throw std::runtime_error(options.trace + ": cannot be both the trace and the page");
    }
    if (!options.trace.empty()) {
        mViews.push_back(std::make_unique<Trace>(options.trace));
    }
    if (!options.html.empty()) {
        mViews.push_back(std::make_unique<Page>(options.html, builtInPage()));
    }
}

void Views::add(const Capture& capture, const Session& session) {
    mHasFindings = mHasFindings || haveTrouble(capture.findings);
    mMissingImages.erase(capture.name);
    for (const auto& view : mViews) {
        view->add(capture, session);
    }
}

void Views::finish(const Session& session) {
    mHasFindings = mHasFindings || haveTrouble(session.findings);
    for (const auto& view : mViews) {
        view->finish(session);
    }
}

}  // namespace view
