// The interface of everything that a manager can hand a request to, and the synchronizer
// that answers commands.

#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>

#include "Export.h"
#include "InfoSyncType.h"
#include "ThreadAnnotations.h"

class IntentAwareSys;

namespace camInfosync {

// The base of all synchronizers. The order of the virtual functions is part of the binary
// interface: a caller may know no more of a synchronizer than its virtual table.
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
// Thread safety: any thread, at any time, whatever the service answers. The service is asked
// with nothing locked. No lock is taken while the same key is asked and answered as the last time;
// anything else takes a mutex for as long as it takes to look the answer up and keep it.
//
// Memory: grows with each key and with each different answer to it, and is freed with the
// executor. A service that makes up a new text for every question makes it grow without end.
class INFOSYNC_EXPORT CmdExecutor : public InfoSynchronizer {
  public:
    // The type is accepted for symmetry with the other synchronizers and not kept.
    explicit CmdExecutor(InfoSyncType type);
    ~CmdExecutor() override;

    // `in` is a zero-terminated command key. Asks the intent-aware object afresh on every call
    // and returns the answer as a zero-terminated text (a const char*); without an intent-aware
    // object the answer is empty. The text belongs to the executor, which neither changes nor
    // frees it as long as it lives. A null key is logged as a warning, and the result is null.
    // What the intent-aware object throws, and std::bad_alloc, pass through; the answers kept
    // so far are then unchanged.
    void* requestCmd(const void* in) override;

  private:
    // What one key was answered.
    struct Answers {
        std::set<std::string> texts;                    // all that came; guarded by mMutex
        std::atomic<const std::string*> last{nullptr};  // one of them; set under mMutex
    };
    using Commands = std::map<std::string, Answers>;

    INFOSYNC_LOCAL const std::string& keep(const std::string& key, std::string answer)
            INFOSYNC_EXCLUDES(mMutex);

    std::mutex mMutex;  // taken last: nothing but the allocator is called while it is held
    Commands mCmdValues INFOSYNC_GUARDED_BY(mMutex);  // by key; entries and texts only come
    std::atomic<const Commands::value_type*> mLastAsked{nullptr};  // an entry; set under mMutex
};

}  // namespace camInfosync
