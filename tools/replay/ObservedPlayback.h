// Plays a log and watches it being played.

#pragma once

#include <cstdio>
#include <functional>
#include <optional>

#include "CaptureLog.h"
#include "CaptureObserver.h"
#include "LogCheck.h"
#include "OverlapService.h"
#include "Playback.h"
#include "Progress.h"
#include "ReplayOptions.h"
#include "ServiceReport.h"
#include "StepReader.h"
#include "View.h"

namespace replay {

class ObservedPlayback {
  public:
    // All must outlive this. Null leaves `json` or `view` out.
    ObservedPlayback(StepReader& reader, const LogFacts& facts, const ReplayOptions& options,
                     std::FILE* json, view::View* view);
    ~ObservedPlayback();
    ObservedPlayback(const ObservedPlayback&) = delete;
    ObservedPlayback& operator=(const ObservedPlayback&) = delete;

    // Throws as Playback does.
    void play(Progress& progress) { mPlayback.play(progress); }

    // To be called once the log was played. Says on standard error what the views leave out. Throws
    // what the view throws or has thrown.
    void finish();

  private:
    void around(const CaptureStep& step, const std::function<void()>& call);

    ServiceReport mReport;
    SetWatch* const mSetWatch;
    std::optional<CaptureObserver> mObserver;
    Playback mPlayback;  // last: its threads use the others
};

}  // namespace replay
