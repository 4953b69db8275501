// The columns of each row, by the names that they have in files.

#pragma once

#include <array>
#include <cstddef>
#include <type_traits>

#include "Row.h"

namespace rows {

// Names of the stages' columns.
inline constexpr std::array<const char*, kStages> kStageColumns = {
        "stage_00_us", "stage_01_us", "stage_02_us", "stage_03_us", "stage_04_us",
        "stage_05_us", "stage_06_us", "stage_07_us", "stage_08_us", "stage_09_us",
        "stage_10_us", "stage_11_us", "stage_12_us", "stage_13_us", "stage_14_us"};

// What the record holds, under the names it has there.
template <typename Row, typename Column>
void visitRecord(Row& row, const Column& column) {
    column("frame_number", row.frameNumber);
    column("timestamp", row.timestamp);
    column("frame_extra", row.frameExtra);
    column("cameras", row.cameras);
    column("cam_id", row.camId);
    column("request_type", row.requestType);
    column("cam_mode", row.camMode);
    column("face_detect", row.faceDetect);
    column("zoom_ratio", row.zoomRatio);
    column("ui_extra", row.uiExtra);
    column("req_value_a", row.reqValueA);
    column("req_value_b", row.reqValueB);
    column("anchor_frame", row.anchorFrame);
    column("req_flag", row.reqFlag);
    column("req_value64", row.reqValue64);
    column("req_ids_a", row.reqIdsA);
    column("expected_result_ids", row.expectedResultIds);
    column("fstop", row.fstop);
    column("iso", row.iso);
    column("lux", row.lux);
    column("exposure_time", row.exposureTime);
    column("algorithms", row.algorithms);
    column("results", row.results);
    column("errors", row.errors);
    column("stages", row.stagesTold);
    for (size_t i = 0; i < kStages; ++i) {
        column(kStageColumns[i], row.stages[i]);
    }
    column("shot_to_shot_us", row.shotToShot);
}

template <typename Row, typename Column>
void visitFindings(Row& row, const Column& column) {
    column("is_flushed", row.isFlushed);
    column("is_removed", row.isRemoved);
    column("has_failed", row.hasFailed);
    column("findings", row.findings);
    column("calls", row.calls);
    column("calls_without_effect", row.callsWithoutEffect);
    column("vendor_errors", row.vendorErrors);
    column("node_time_outs", row.nodeTimeOuts);
    column("node_errors", row.nodeErrors);
    column("error_texts", row.errorTexts);
    column("results_missing", row.resultsMissing);
    column("no_completions", row.noCompletions);
    column("first_finding", row.firstFinding);
    column("reports", row.reports);
}

template <typename Row, typename Column>
void visitCapture(Row& row, const Column& column) {
    column("run_id", row.runId);
    column("capture_seq", row.captureSeq);
    column("source", row.source);
    column("line", row.line);
    column("device", row.device);
    column("build", row.build);
    column("process", row.process);
    column("name", row.name);
    column("registered_ns", row.registered);
    column("flushed_ns", row.flushed);
    column("removed_ns", row.removed);
    column("registered_at_us", row.registeredAt);
    column("to_flush_us", row.toFlush);
    visitFindings(row, column);
    visitRecord(row, column);
    column("node_count", row.nodeCount);
    column("slowest_node", row.slowestNode);
    column("slowest_node_us", row.slowestNodeTook);
}

template <typename Row, typename Column>
void visitNode(Row& row, const Column& column) {
    column("run_id", row.runId);
    column("capture_seq", row.captureSeq);
    column("device", row.device);
    column("build", row.build);
    column("cam_mode", row.camMode);
    column("name", row.name);
    column("registered_ns", row.registered);
    column("node", row.node);
    column("is_listed", row.isListed);
    column("start_us", row.start);
    column("second_us", row.second);
    column("completion_us", row.completion);
    column("duration_us", row.took);
    column("timed_out", row.timedOut);
    column("has_failed", row.hasFailed);
    column("state", row.state);
}

template <typename Row, typename Column>
void visitRun(Row& row, const Column& column) {
    column("run_id", row.runId);
    column("source", row.source);
    column("device", row.device);
    column("build", row.build);
    column("clock", row.clock);
    column("captures", row.captures);
    column("nodes", row.nodes);
    column("calls", row.calls);
    column("findings", row.findings);
}

// Calls `column(name, member)` for each column but "schema_version" and the run's switches, in the
// order in which they are written.
template <typename Row, typename Column>
void visitColumns(Row& row, const Column& column) {
    using Kind = std::remove_const_t<Row>;
    if constexpr (std::is_same_v<Kind, CaptureRow>) {
        visitCapture(row, column);
    } else if constexpr (std::is_same_v<Kind, NodeRow>) {
        visitNode(row, column);
    } else {
        visitRun(row, column);
    }
}

}  // namespace rows
