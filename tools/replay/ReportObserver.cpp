// What the observer sees of reports, on the threads that make them.

#include <string>
#include <utility>

#include "CallKind.h"
#include "Capture.h"
#include "CaptureContent.h"
#include "CaptureObserver.h"
#include "Line.h"
#include "Observation.h"
#include "OverlapService.h"
#include "ReportedValues.h"
#include "RequestRecord.h"
#include "TrackedCapture.h"

namespace replay {
namespace {

using Kind = ServiceCall::Kind;

}  // namespace

void CaptureObserver::watch(ServiceCall& call) {
    if (Observation* observed = Observation::current(); observed != nullptr) {
        observed->owner.watchCall(*observed, call);
    }
}

void CaptureObserver::watchCall(Observation& observed, ServiceCall& call) {
    view::Report& report = observed.report;
    switch (call.kind) {
        case Kind::kSetParam:
            report.parameters.emplace_back(call.key, call.value);
            return;
        case Kind::kReportEvent:
            report.events.push_back({call.value, false});
            return;
        case Kind::kFinishReport:
            break;
    }
    report.closing = {call.first, call.second};
    report.at = originOf(*observed.call.step).at;
    report.place = originOf(*observed.call.step).place;
    view::Report whole = std::exchange(report, {});
    if (observed.call.kind != CallKind::kFlush) {
        observed.call.requested.push_back(std::move(whole));
        return;
    }
    // The flush that this thread is in holds the queue's mutex.
    const std::string& name = observed.call.step->arguments.image;
    const Record& record = *mQueue.records.at(name);
    observed.call.isReported = true;
    if (mSettings.records) {
        call.note = recordLine(name, record);
    }
    mFlushed.add(&record, {callOf(*observed.call.step), std::move(whole), reportedValues(record)});
}

std::string CaptureObserver::recordLine(const std::string& name, const Record& record) const {
    Record shown = record;
    if (!mSettings.isTimed) {
        const DeskTimes desk = mFlushed.deskTimes(&record);
        shown.createTime = desk.created ? timespec{} : shown.createTime;
        shown.requestTime = desk.requested ? timespec{} : shown.requestTime;
        for (const std::string& stage : desk.stages) {
            shown.snapshotInfo.timeInfo.erase(stage);
        }
    }
    recording::Line line;
    line.begin();
    line.field("call", "record");
    line.field("image", name);
    line.field("record", shown);
    line.end();
    return std::string(line.text());
}

}  // namespace replay
