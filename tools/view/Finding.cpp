#include "Finding.h"

namespace view {

bool meansNoEffect(FindingKind kind) {
    return kind <= FindingKind::kLate;
}

bool meansFailure(FindingKind kind) {
    return kind > FindingKind::kLate && kind <= FindingKind::kNeverFlushed;
}

const char* nameOf(FindingKind kind) {
    switch (kind) {
        case FindingKind::kUnknownName:
            return "unknown_name";
        case FindingKind::kAfterRemoval:
            return "after_removal";
        case FindingKind::kBeforeFrameInfo:
            return "before_frame_info";
        case FindingKind::kAlreadyRegistered:
            return "already_registered";
        case FindingKind::kCollectionOff:
            return "collection_off";
        case FindingKind::kOtherManager:
            return "other_manager";
        case FindingKind::kNoReportType:
            return "no_report_type";
        case FindingKind::kStageOutOfRange:
            return "stage_out_of_range";
        case FindingKind::kUnknownStageName:
            return "unknown_stage_name";
        case FindingKind::kCodeOutOfRange:
            return "code_out_of_range";
        case FindingKind::kStateOutOfRange:
            return "state_out_of_range";
        case FindingKind::kNothingGiven:
            return "nothing_given";
        case FindingKind::kNoService:
            return "no_service";
        case FindingKind::kLate:
            return "late";
        case FindingKind::kVendorError:
            return "vendor_error";
        case FindingKind::kNodeTimeOut:
            return "node_time_out";
        case FindingKind::kNodeError:
            return "node_error";
        case FindingKind::kErrorText:
            return "error_text";
        case FindingKind::kResultMissing:
            return "result_missing";
        case FindingKind::kNoCompletion:
            return "no_completion";
        case FindingKind::kNeverFlushed:
            return "never_flushed";
        case FindingKind::kStageLeftOut:
            return "stage_left_out";
        case FindingKind::kNeverRemoved:
            return "never_removed";
        case FindingKind::kCutEvent:
            return "cut_event";
        case FindingKind::kGap:
            return "gap";
    }
    return "";
}

}  // namespace view
