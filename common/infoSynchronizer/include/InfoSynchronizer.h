// The interface of everything that a manager can hand a request to, and the synchronizer
// that answers commands.

#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Export.h"
#include "InfoSyncType.h"

class IntentAwareSys;

namespace camInfosync {

// The base of all synchronizers. Callers may hold only its virtual table: the order of the
// virtual functions is part of the binary interface.
class INFOSYNC_EXPORT InfoSynchronizer {
  public:
    // Logs the address of the intent-aware object if there is one.
    InfoSynchronizer();
    virtual ~InfoSynchronizer();
    InfoSynchronizer(const InfoSynchronizer&) = delete;
    InfoSynchronizer& operator=(const InfoSynchronizer&) = delete;

    // Takes information. What `in` points to is up to the derived class; the base does nothing.
    virtual void requestInfo(const void* in);

    // Takes a command and returns its result, which stays owned by the synchronizer. The base
    // does nothing and returns null.
    virtual void* requestCmd(const void* in);

    int32_t mStatus;  // 1 from construction on; nothing in the library reads it

    // The service object that all synchronizers talk to, or null if the overlap library gave
    // none. Borrowed from that library. Set once while this library is being loaded, read-only
    // from then on, and therefore free of a lock.
    static IntentAwareSys* mIntentAwareImpl;
};

// Answers commands with the values that the intent-aware object gives for them.
//
// Thread safety: no lock is taken. Two threads may ask for the same key at once only after
// the key has been answered before, and while the answer stays the same: such a call writes
// nothing. A first question, or one whose answer differs from the last, must not overlap any
// other call, nor a use of the text that an earlier call for this key returned.
class INFOSYNC_EXPORT CmdExecutor : public InfoSynchronizer {
  public:
    // The type is accepted for symmetry with the other synchronizers and not kept.
    explicit CmdExecutor(InfoSyncType type);
    ~CmdExecutor() override;

    // `in` is a zero-terminated command key. Asks the intent-aware object afresh on every call
    // and returns the answer as a zero-terminated text (a const char*); without an intent-aware
    // object the answer is empty. The text belongs to the executor and is valid until the same
    // key is asked again. A null key is logged as a warning, and the result is null.
    // What the intent-aware object throws, and std::bad_alloc, pass through; the answers kept
    // so far are then unchanged.
    void* requestCmd(const void* in) override;

  private:
    std::map<std::string, std::string> mCmdValues;  // last answer per key; no lock, see above
};

}  // namespace camInfosync
