// A capture that is under way, and what will be told of it once it is over.

#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CallKind.h"
#include "Capture.h"
#include "CaptureContent.h"
#include "CaptureLog.h"
#include "Finding.h"
#include "FindingList.h"
#include "ReportedValues.h"
#include "RequestRecord.h"

namespace replay {

Origin originOf(const CaptureStep& step);
view::Call callOf(const CaptureStep& step);

// A flush or request that the service received, as the record was then.
struct ReportedRecord {
    view::Call call;
    view::Report report;
    ReportedValues values;
};

// Thread safety: none of its own, nor does it take the mutex that guards the record.
class TrackedCapture {
  public:
    using Record = camInfosync::RequestRecord;

    // Keeps the record until the capture is over, so that its content outlives its removal.
    TrackedCapture(uint64_t number, std::string name, std::shared_ptr<const Record> record);

    const std::shared_ptr<const Record>& record() const { return mRecord; }
    const DeskTimes& deskTimes() const { return mDeskTimes; }
    const std::string& name() const { return mCapture.name; }
    uint64_t number() const { return mCapture.number; }
    bool isRegistered() const { return mCapture.isRegistered; }
    uint64_t registeredLine() const { return mRegistered.place.line; }

    void addCall(const CaptureStep& step, bool hadEffect);
    void addFinding(view::Finding finding);

    void noteRegistration(const CaptureStep& step);
    // Before an update, which may stamp a stage with the desk's time.
    void noteStage(const CaptureStep& step, CallKind kind);
    // After an update of the record, which had that many errors before.
    void noteUpdate(const CaptureStep& step, CallKind kind, size_t errorsBefore);
    // The record's whole content was given by this call.
    void noteGiven(const CaptureStep& step);
    // The record was reported; `values` of a request are another record's.
    void noteReport(ReportedRecord reported, bool isFlush);
    void noteFlushWithoutReport(const CaptureStep& step, bool hadEffect);
    void noteRemoval(const CaptureStep& step);

    // Calls beyond twenty thousand, which are not kept.
    uint64_t callsLeftOut() const { return mCallsLeftOut; }

    // The whole of it, once nothing more will come in this log. What is missing is a finding only
    // if the capture is over, and does not go on in another log. To be called once.
    view::Capture complete(bool isOver);

  private:
    void noteFlushed(const view::Call& call);
    void noteTold(const CaptureStep& step, CallKind kind, const Origin& origin);
    void noteResults(const Origin& origin);
    void keepCall(view::Call call);
    void findMissingResults();
    void findMissingCompletions();
    void findLateCalls();
    void findMissingSteps();
    std::string markAsUseless(uint64_t line);
    const Origin& tellerOf(Teller teller, const std::string& node) const;

    view::Capture mCapture;
    const std::shared_ptr<const Record> mRecord;
    FindingList mFindings;
    ToldValues mTold;
    DeskTimes mDeskTimes;
    Origin mRegistered;
    Origin mExpected;  // where results were last expected
    std::map<Teller, Origin> mTellers;
    std::map<std::string, Origin> mNodes;     // where their times were told
    std::map<int32_t, Origin> mResults;       // where they were told
    std::optional<ReportedValues> mReported;  // by the last flush
    uint64_t mCallsLeftOut = 0;
};

}  // namespace replay
