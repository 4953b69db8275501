// Builds captures out of the library's messages.

#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Capture.h"
#include "Finding.h"
#include "FindingList.h"
#include "Process.h"
#include "View.h"

namespace logcat {

// Hands each capture to a view once it is removed, and the rest at the end. Captures of one name in
// several processes are apart; those of processes with the same number are not.
//
// A finding is made only of what the messages are certain about.
class CaptureBuilder {
  public:
    CaptureBuilder(view::View& view, view::Session& session) : mView(view), mSession(session) {}

    void add(const Entry& entry);
    // The logger has dropped lines of a process.
    void addGap(int32_t pid, const std::string& text, view::Time at, view::Place place);
    // There are lines of the engine's tag, without which there are no reports.
    void setHasEngineTag() { mHasEngineTag = true; }
    // Hands over the captures that were not removed; the session is the caller's to finish.
    void finish();

  private:
    using Kind = Message::Kind;
    struct SwitchedOff {
        Entry first;         // the line that tells so
        std::string answer;  // the service's, there
        uint64_t calls;
    };

    OpenCapture& open(Process& process, const Entry& entry);
    OpenCapture& recordOf(Process& process, const Entry& entry);
    void complete(Process& process, const std::string& name);

    void addOther(Process& process, const Entry& entry);
    void addRegistration(Process& process, const Entry& entry);
    void addRemoval(Process& process, const Entry& entry);
    void addUpdate(Process& process, const Entry& entry);
    void addStage(Process& process, const Entry& entry);
    void addSwitch(Process& process, const Entry& entry);
    void addFlush(Process& process, const Entry& entry);
    void addEmptyFlush(Process& process, const Entry& entry, bool isWhole);
    bool isTellingOf(const Thread& thread, const Entry& entry) const;
    void addEvent(Process& process, const Entry& entry);
    void addWarning(Process& process, const Entry& entry);
    void addUnknownName(Process& process, const Entry& entry);
    void addCode(const Entry& entry);
    void addVendorError(Process& process, const Entry& entry);
    void addConstruction(Process& process, const Entry& entry);
    bool lacksService(const Process& process) const;
    std::string answerText(const SwitchedOff& off) const;
    void finishSwitches();

    void endTelling(Process& process, Thread& thread);
    void endTellingsOf(Process& process, const std::string& name);
    void attach(Process& process, Telling& telling, OpenCapture& open);
    void find(OpenCapture* open, const Entry& entry, view::FindingKind kind,
              const std::string& text);
    void findOfSession(const Entry& entry, view::FindingKind kind, const std::string& text);
    void findUnknown(const Process& process, const Entry& entry, const std::string& text);
    void addCall(OpenCapture& open, const Entry& entry, bool hadEffect = true);

    view::View& mView;
    view::Session& mSession;
    std::map<int32_t, Process> mProcesses;
    replay::FindingList mFindings;  // the session's
    uint64_t mCaptures = 0;
    uint64_t mFlushes = 0;
    uint64_t mReports = 0;
    uint64_t mPileUps = 0;
    view::Place mFirstPileUp;
    std::map<bool, SwitchedOff> mSwitchedOff;  // by whether the switch is the service's answer
    bool mHasEngineTag = false;
};

}  // namespace logcat
