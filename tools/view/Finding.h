// What went wrong with a capture, or with a call.

#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace view {

// Nanoseconds on the clock of the session; absent where it is not known.
using Time = std::optional<int64_t>;

// A line of what was read.
struct Place {
    uint32_t source = 0;  // index into Session::sources
    uint64_t line = 0;    // from 1; 0: not known
};

enum class FindingKind {
    // A call had no effect:
    kUnknownName,        // no capture of that name was ever registered
    kAfterRemoval,       // there was one, and it has been removed
    kBeforeFrameInfo,    // the operation goes by the frame's name, which is not known yet
    kAlreadyRegistered,  // the name has a record, which is left as it is
    kCollectionOff,      // once for each switch that is off
    kOtherManager,       // on the manager of GetInstance(), which has no records
    kNoReportType,       // a flush of a type that reports nothing
    kStageOutOfRange,
    kUnknownStageName,
    kCodeOutOfRange,
    kStateOutOfRange,
    kNothingGiven,  // null where a text or a record must be
    kNoService,     // a flush without a service to report to
    kLate,          // it changed what had been reported, and no report followed

    // The capture failed:
    kVendorError,
    kNodeTimeOut,
    kNodeError,
    kErrorText,      // an error that was told in words
    kResultMissing,  // a vendor result that was expected and never came
    kNoCompletion,   // of a node that has started
    kNeverFlushed,

    // Worth knowing:
    kStageLeftOut,  // an unknown name, by a call that told other stages as well
    kNeverRemoved,
    kCutEvent,  // the log kept its beginning only
    kGap,       // lines are missing from the log
};

bool meansNoEffect(FindingKind kind);
bool meansFailure(FindingKind kind);

// Its name for programs, such as "vendor_error".
const char* nameOf(FindingKind kind);

// All texts are as the source has them: a view makes them safe for where it writes them.
struct Finding {
    FindingKind kind;
    std::string text;     // one line for a person, without the capture's name and the place
    std::string subject;  // the node, the vendor result's id or the operation; may be empty
    Place place;          // of the line that caused it
    Time at;
    uint64_t calls = 1;  // that it stands for
};

}  // namespace view
