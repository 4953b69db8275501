#include "Recorder.h"

#include <cutils/properties.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <string_view>

#include <android/log.h>

#include "Call.h"
#include "InfoSynchronizer.h"
#include "Lines.h"
#include "Order.h"
#include "RecordFile.h"
#include "Recording.h"
#include "ServiceProxy.h"
#include "Settings.h"
#include "Tag.h"

namespace recording {

RECORDING_CONSTINIT std::atomic<State> gState{State::kUndecided};
RECORDING_CONSTINIT std::atomic<const void*> gManager{nullptr};
RECORDING_CONSTINIT std::atomic<const void*> gOtherManager{nullptr};

namespace {

template <typename Value>
union NeverDestroyed {
    constexpr NeverDestroyed() : value() {}
    ~NeverDestroyed() {}  // NOLINT(modernize-use-equals-default): it would be deleted
    Value value;
};

RECORDING_CONSTINIT NeverDestroyed<Order> order;       // of the getInstance() manager's records
RECORDING_CONSTINIT NeverDestroyed<Order> otherOrder;  // of the GetInstance() manager's

// The write mutex guards what follows. It is taken last: nothing but the C library is called while
// it is held, and nothing is logged.
RECORDING_CONSTINIT NeverDestroyed<std::mutex> writing;
RECORDING_CONSTINIT NeverDestroyed<std::unique_ptr<Recording>> recording;

RECORDING_CONSTINIT NeverDestroyed<ServiceProxy> proxy;

// What is to be logged once the write mutex is free.
struct Notice {
    std::string begun;  // the path of a new part
    char ended[1024];   // why the recording has ended; no memory may be left to say it
    Notice() { ended[0] = '\0'; }
    void log() const {
        if (!begun.empty()) {
            __android_log_print(ANDROID_LOG_INFO, kTag, "recording to %s", begun.c_str());
        }
        if (ended[0] != '\0') {
            __android_log_print(ANDROID_LOG_WARN, kTag, "%s", ended);
        }
    }
};

void stop(Notice& notice, const Fault& fault) {
    gState.store(State::kOff, std::memory_order_release);
    std::snprintf(notice.ended, sizeof(notice.ended), "%s %s: %s; recording ends",
                  recording.value->file().path().c_str(), fault.what, std::strerror(fault.error));
    recording.value.reset();
}

// Gives back the errno that the HAL is perhaps about to read.
class KeptErrno {
  public:
    KeptErrno() = default;
    ~KeptErrno() { errno = mError; }
    KeptErrno(const KeptErrno&) = delete;
    KeptErrno& operator=(const KeptErrno&) = delete;

  private:
    const int mError = errno;
};

// Lets `write` add to the recording, if there still is one. Nothing is added after what `isLast`.
template <typename Write>
void addToRecording(Write write, bool isLast = false) {
    const KeptErrno keptErrno;
    Notice notice;
    {
        const std::lock_guard<std::mutex> lock(writing.value);
        if (recording.value == nullptr) {
            return;
        }
        try {
            const auto partsBefore = recording.value->file().partsBegun();
            write(*recording.value);
            if (recording.value->file().partsBegun() != partsBefore) {
                notice.begun = recording.value->file().path();
            }
            if (isLast) {
                gState.store(State::kOff, std::memory_order_release);
                recording.value.reset();
            }
        } catch (const Fault& fault) {
            stop(notice, fault);
        } catch (const std::exception&) {  // what ends a cancelled thread is none, and passes
            stop(notice, Fault{"cannot be written", ENOMEM});
        }
    }
    notice.log();
}

Header describeProcess(const Settings& settings) {
    Header header;
    header.pid = getpid();
    header.process = settings.process;
    header.supported = property_get_bool("persist.vendor.camera.camquill.supported", 0) != 0;
    header.forceEnabled =
            property_get_bool("persist.vendor.camera.infoSyncCollect.forceEnabled", 0) != 0;
    header.service = camInfosync::InfoSynchronizer::mIntentAwareImpl != nullptr;
    return header;
}

State decide() {
    findOperations();
    try {
        const Settings settings = Settings::read();
        if (settings.folder.empty()) {
            return State::kOff;
        }
        recording.value = std::make_unique<Recording>(settings, describeProcess(settings));
    } catch (...) {
        __android_log_print(ANDROID_LOG_WARN, kTag, "no memory; nothing is recorded");
        return State::kOff;
    }
    // A child has a copy of the descriptor and of the mutexes, perhaps locked: it is off before it
    // can touch them.
    if (pthread_atfork(nullptr, nullptr, [] { gState.store(State::kOff); }) != 0) {
        __android_log_print(ANDROID_LOG_WARN, kTag, "no memory; nothing is recorded");
        return State::kOff;
    }
    proxy.value.install();
    return State::kOn;
}

// Begins while the recorder is being loaded, or with a call that comes before. Ends with the
// process or when the recorder is unloaded.
struct Life {
    Life() { isRecording(); }
    ~Life() {
        proxy.value.remove();
        if (!isRecording()) {
            return;
        }
        addToRecording([](Recording& open) { open.end(); }, true);
    }
};
const Life life;

}  // namespace

bool isRecording() {
    if (gState.load(std::memory_order_acquire) == State::kUndecided) {
        static const bool decided = (gState.store(decide(), std::memory_order_release), true);
        static_cast<void>(decided);
    }
    return !isOff();
}

void noteCall(Frame& frame, const void* manager, Call call, const WriteArguments& writeArguments) {
    call.isOther = manager == gOtherManager.load(std::memory_order_relaxed);
    // Read by those calls alone that make the library read it.
    call.isSeen = call.asks() && camInfosync::InfoSynchronizer::mIntentAwareImpl == &proxy.value;
    const bool isUpdate = call.kind == Call::Kind::kUpdate;
    if (isUpdate && !call.isOther && manager != gManager.load(std::memory_order_relaxed)) {
        static std::atomic_flag isKnown = ATOMIC_FLAG_INIT;
        if (!isKnown.test_and_set()) {
            __android_log_print(ANDROID_LOG_WARN, kTag,
                                "updates of a manager of the caller's own are not recorded");
        }
        return;
    }
    if (!call.isRequest()) {
        frame.hold(isUpdate && call.isOther ? otherOrder.value : order.value);
    }
    addToRecording([&](Recording& open) { open.noteCall(frame, call, writeArguments); });
    if (isOff()) {
        frame.letGo();
    }
}

RecordedFrame::~RecordedFrame() {
    if (isOpen && isRecording()) {
        addToRecording([&](Recording& open) { open.noteReturn(*this); });
    }
}

Question::Question(Frame& frame, const std::string& key) : mFrame(frame) {
    mFrame.letGo();
    if (key.size() <= sizeof(mShortKey)) {
        mKey = {mShortKey, key.copy(mShortKey, sizeof(mShortKey))};
        return;
    }
    try {
        mLongKey = key;
        mKey = mLongKey;
    } catch (const std::bad_alloc&) {
        addToRecording([](Recording& /*open*/) { throw Fault{"cannot be written", ENOMEM}; });
    }
}

Question::~Question() {
    if (mIsOpen) {
        goOn(nullptr);
    }
}

void Question::answered(const std::string& answer) {
    mIsOpen = false;
    goOn(&answer);
}

void Question::goOn(const std::string* answer) {
    if (!isRecording()) {
        return;  // perhaps forked: then nobody is left who lets go of a mutex
    }
    mFrame.holdAgain();
    addToRecording([&](Recording& open) { open.noteAnswer(mFrame, mKey, answer); });
}

}  // namespace recording
