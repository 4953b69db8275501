#include "SessionTotals.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Capture.h"
#include "Finding.h"
#include "Section.h"
#include "TerminalStyle.h"
#include "TerminalText.h"
#include "View.h"

namespace view {
namespace {

constexpr size_t kMostNames = 10;
constexpr size_t kLongestName = 60;

template <typename Has>
uint64_t callsOf(const std::vector<Finding>& findings, Has has) {
    uint64_t calls = 0;
    for (const Finding& finding : findings) {
        calls += has(finding.kind) ? finding.calls : 0;
    }
    return calls;
}

std::string numberOf(std::optional<uint64_t> count) {
    return count ? std::to_string(*count) : kNotKnown;
}

}  // namespace

void SessionTotals::Names::add(const std::string& name, const std::string& more) {
    ++count;
    if (first.size() < kMostNames) {
        first.push_back(withoutMiddle(safeName(name), kLongestName, TerminalStyle()) + more);
    }
}

std::string SessionTotals::Names::text() const {
    const std::string more = ", ... and " + std::to_string(count - first.size()) + " more";
    return std::to_string(count) + (count == 0 ? "" : ": " + joined(first)) +
           (count > first.size() ? more : "");
}

void SessionTotals::add(const Capture& capture) {
    ++mCaptures;
    mNoEffects += callsOf(capture.findings, meansNoEffect);
    if (const uint64_t failures = callsOf(capture.findings, meansFailure); failures != 0) {
        mFailed.add(capture.name, " (" + counted(failures, "failure") + ")");
    }
    if (capture.isRegistered && !capture.isRemoved) {
        mLeft.add(capture.name, "");
    }
}

std::string SessionTotals::line(const Session& session) const {
    const uint64_t calls = mNoEffects + callsOf(session.findings, meansNoEffect);
    const uint64_t others = callsOf(session.findings, meansFailure);
    return counted(mCaptures, "capture") + ", " + std::to_string(mFailed.count) + " failed, " +
           counted(calls, "call") + " without effect" +
           (others == 0 ? "" : ", " + counted(others, "failure") + " of no known capture");
}

std::string SessionTotals::text(const Session& session) const {
    const auto collection = session.switches.find("collection");
    Section section("totals", 0);
    section.add("collection",
                collection != session.switches.end() ? safe(collection->second) : kNotKnown);
    section.add("calls made", std::to_string(session.calls));
    section.add("flush calls", numberOf(session.flushes));
    section.add("reports", numberOf(session.reports));
    section.add("service calls", numberOf(session.serviceCalls));
    section.add("records left", mLeft.text());
    section.add("failed captures", mFailed.text());
    return section.text();
}

}  // namespace view
