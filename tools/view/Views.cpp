#include "Views.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Capture.h"
#include "Finding.h"
#include "NewFile.h"
#include "Page.h"
#include "PageParts.h"
#include "Rows.h"
#include "StatsView.h"
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

void refuseOneFile(const std::string& one, const char* what, const std::string& other,
                   const char* otherwise) {
    if (!one.empty() && !other.empty() && nameOneFile(one, other)) {
        throw std::runtime_error(one + ": cannot be both " + what + " and " + otherwise);
    }
}

}  // namespace

Views::Views(const ViewOptions& options, std::FILE* terminal)
    : mMissingImages(options.images.begin(), options.images.end()) {
    refuseOneFile(options.trace, "the trace", options.html, "the page");
    refuseOneFile(options.trace, "the trace", options.statsJson, "the statistics");
    refuseOneFile(options.html, "the page", options.statsJson, "the statistics");
    terminal = options.quiet ? nullptr : terminal;
    if (options.stats) {
        mViews.push_back(std::make_unique<stats::StatsView>(options, terminal));
    } else if (terminal != nullptr) {
        mViews.push_back(std::make_unique<TerminalView>(options, terminal, styleOf(terminal)));
    }
    if (!options.trace.empty()) {
        mViews.push_back(std::make_unique<Trace>(options.trace));
    }
    if (!options.html.empty()) {
        mViews.push_back(std::make_unique<Page>(options.html, builtInPage()));
    }
    if (!options.rows.folder.empty()) {
        mViews.push_back(std::make_unique<Rows>(options.rows));
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
