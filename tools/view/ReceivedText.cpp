#include "ReceivedText.h"

#include <cstddef>
#include <string>

#include "Capture.h"
#include "FindingText.h"
#include "MomentText.h"
#include "Section.h"
#include "TerminalText.h"
#include "View.h"

namespace view {
namespace {

std::string parametersText(const Report& report) {
    Section section("parameters");
    for (const auto& [key, value] : report.parameters) {
        section.add(safe(key), safe(value));
    }
    return section.text();
}

std::string eventsText(const Report& report) {
    if (report.events.empty()) {
        return sectionLine("events", "none");
    }
    Section section("events");
    size_t number = 0;
    for (const Report::Event& event : report.events) {
        section.add(std::to_string(++number),
                    safe(event.text) + (event.isCut ? "... (cut by the log)" : ""));
    }
    return section.text();
}

std::string closingText(const Report& report) {
    return report.closing ? "  closed by finishReport(" + std::to_string(report.closing->first) +
                                    ", " + std::to_string(report.closing->second) + ")\n"
                          : sectionLine("closed by", kNotKnown);
}

}  // namespace

std::string receivedText(const Capture& capture, size_t index, const Session& session) {
    const Report& report = capture.reports[index];
    const std::string place = placeText(report.place, session);
    return "  report " + std::to_string(index + 1) + afterText(capture.registered, report.at) +
           (place.empty() ? "" : ", " + place) + '\n' + parametersText(report) +
           eventsText(report) + closingText(report);
}

}  // namespace view
