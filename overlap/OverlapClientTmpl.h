// Finds the overlap library, loads it, and keeps the instance that it returns.

#pragma once

#include <dlfcn.h>
#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <memory>
#include <utility>

#include <android/log.h>

#include "IntentAwareSys.h"

namespace zu_hal_overlap {

// The option block whose address the overlap library's entry point takes. That library fixes
// the layout.
struct OverlapOptions {
    bool enabled[5] = {true, true, true, true, true};
    uint8_t padding[3] = {0, 0, 0};
    bool disabled[5] = {false, false, false, false, false};
};
static_assert(offsetof(OverlapOptions, disabled) == 8 && sizeof(OverlapOptions) == 13,
              "the overlap library reads the options at these offsets");

// The overlap library's entry point, and the name that it is exported under.
using OverlapEntry = OverlapInstance*(OverlapOptions* options);
inline constexpr char kOverlapEntry[] = "GetInstance";

// The client of the overlap library: one for each binary that includes this, which is this library
// alone. A process without the overlap library is normal: the client then holds nothing.
//
// The overlap library is loaded while this library is, and must not call this library until that
// is done. It is closed when this library is unloaded or the process exits: by then its own threads
// must have ended. An exception of its entry point, of the start or of the service's accessor is
// caught; one that leaves a static initialiser of that library ends the process, and nothing here
// could catch it.
//
// Thread safety: GetInstance is safe from any thread. Load and GetIntentAwareSys take no lock;
// they are meant for load time, when the dynamic loader runs one thread.
//
// Logs to the Android log only, without a prefix and without a gate.
class OverlapClientTmpl {
  public:
    // The client; the first call loads the overlap library.
    static OverlapClientTmpl& GetInstance() {
        static OverlapClientTmpl s_OverlapClient;
        return s_OverlapClient;
    }

    // The service object of the overlap library, or null. The library is asked until it has
    // given an object, and never again after that. If it throws, that is logged, and there is
    // none. The object must not be used after the client's destruction.
    static IntentAwareSys* GetIntentAwareSys() {
        static IntentAwareSys* intent_aware = nullptr;
        OverlapInstance* instance = GetInstance().mInstance;
        if (intent_aware == nullptr && instance != nullptr) {
            try {
                intent_aware =
                        static_cast<IntentAwareSys*>(instance->getObject("IntentAwareSys", 0));
            } catch (...) {
                log(ANDROID_LOG_ERROR, kThrew);
            }
        }
        return intent_aware;
    }

    // Loads the library from /vendor or, if there is no such file, from /odm. A file that does
    // not load is not looked for elsewhere. Returns 0 if the library is loaded, also if it was
    // before, and -1 if not. A library that throws is closed again, and the exception is logged.
    int Load() {
        if (mState >= 1) {
            log(ANDROID_LOG_DEBUG, "Load() return...(1)");
            return 0;
        }
        mHandle.reset();
        struct stat status {};
        const char* path = stat(kVendorPath, &status) == 0 ? kVendorPath : kOdmPath;
        std::unique_ptr<void, LibraryCloser> handle(dlopen(path, RTLD_NOW | RTLD_GLOBAL));
        // Deliberate: this line goes to standard output, where its readers expect it.
        std::cout << "features_mgr_handle = " << handle.get() << std::endl;
        if (handle == nullptr) {
            const char* error = dlerror();
            log(ANDROID_LOG_ERROR, error != nullptr ? error : "");
            log(ANDROID_LOG_DEBUG, "Load() return...(2)");
            return -1;
        }
        // Deliberate: not checked. An overlap library without this entry point is not supported.
        auto* entry = reinterpret_cast<OverlapEntry*>(dlsym(handle.get(), kOverlapEntry));
        OverlapInstance* instance = nullptr;
        try {
            instance = entry(&mOptions);
            if (instance == nullptr) {
                return -1;  // Deliberate: silent. The library has chosen to offer nothing.
            }
            instance->start();
        } catch (...) {
            // It must not pass: its type may be the library's own, which is closed now.
            log(ANDROID_LOG_ERROR, kThrew);
            return -1;
        }
        mHandle = std::move(handle);
        mInstance = instance;
        mState = 1;
        log(ANDROID_LOG_DEBUG, "Load() return. EXEC_SUCCESS");
        return 0;
    }

    OverlapClientTmpl(const OverlapClientTmpl&) = delete;
    OverlapClientTmpl& operator=(const OverlapClientTmpl&) = delete;

    // The instance is not released: it belongs to the overlap library.
    ~OverlapClientTmpl() {
        if (mHandle != nullptr) {
            log(ANDROID_LOG_DEBUG, "dlclose()");
            mHandle.reset();
        }
        mState = 0;
        log(ANDROID_LOG_DEBUG, "~OverlapClient() <<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<");
    }

  private:
    struct LibraryCloser {
        void operator()(void* handle) const { dlclose(handle); }
    };
    static_assert(sizeof(std::unique_ptr<void, LibraryCloser>) == sizeof(void*),
                  "the handle must stay a bare pointer in memory");

    static constexpr const char* kVendorPath = "/vendor/lib64/com.veltro.camhal.overlap.so";
    static constexpr const char* kOdmPath = "/odm/lib64/com.veltro.camhal.overlap.so";
    static constexpr const char* kThrew = "the overlap library has thrown an exception";

    OverlapClientTmpl() {
        log(ANDROID_LOG_DEBUG, "OverlapClient() begin >>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>");
        Load();
        log(ANDROID_LOG_DEBUG, "OverlapClient() end");
    }

    static void log(int priority, const char* text) {
        // Deliberate: the text is the format, also when it comes from dlerror().
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        __android_log_print(priority, "[EC_Overlap]", text);
#pragma GCC diagnostic pop
    }

    std::unique_ptr<void, LibraryCloser> mHandle;
    [[maybe_unused]] void* mReserved[2] = {nullptr, nullptr};  // keep the members' fixed order
    OverlapInstance* mInstance = nullptr;                      // borrowed from the loaded library
    int32_t mState = 0;                                        // 0: not loaded, 1: loaded
    OverlapOptions mOptions;
};

}  // namespace zu_hal_overlap
