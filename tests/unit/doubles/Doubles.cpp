#include "Doubles.h"

#include <dlfcn.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <future>
#include <stdexcept>
#include <utility>

#include <android/log.h>
#include <cutils/properties.h>
#include <processgroup/processgroup.h>
#include <zudebug/Log.h>

namespace doubles {

std::function<std::string(const std::string& key)> onQuery;
std::function<void(const Call& call)> onCall;
std::function<void()> onLog;
std::atomic<int> threadsLeft{-1};
std::atomic<int> clockReads{0};
thread_local std::string profiles;
thread_local int nice;

}  // namespace doubles

namespace {

// The library logs before main: this must exist by the first use.
struct State {
    std::mutex mutex;
    std::vector<std::string> journal;
};
State& state() {
    static auto& state = *new State;
    return state;
}

// Constant-initialised, like those above: the C library's own start reaches them.
std::atomic<bool> clockStopped{false};
timespec clockTime{};

// The locks that this thread counts.
struct LockCount {
    bool on = false;
    pthread_mutex_t* mutex = nullptr;  // null: all
    int locks = 0;
    const std::function<void()>* onLock = nullptr;
};
thread_local LockCount counting;

__attribute__((format(printf, 1, 0))) std::string formatted(const char* format, va_list arguments) {
    char text[1024];
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the callers have started it.
    vsnprintf(text, sizeof(text), format, arguments);
    return text;
}

// A text, of which a failed comparison shows the difference by lines.
std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}

// The lines under "## name", up to a blank one.
std::vector<std::string> expectedLines(const std::string& suite, const std::string& name) {
    std::ifstream file(EXPECTED "/" + suite + ".txt");
    std::string line;
    while (std::getline(file, line) && line != "## " + name) {
    }
    std::vector<std::string> lines;
    while (std::getline(file, line) && !line.empty()) {
        lines.push_back(line);
    }
    return lines;
}

class Service final : public doubles::CallService {
    void receive(const doubles::Call& call) override {
        std::string text = call[0] + "(" + call[1];
        for (size_t i = 2; i < call.size(); ++i) {
            text += ", " + call[i];
        }
        doubles::note(text + ")");
        if (doubles::onCall) {
            doubles::onCall(call);
        }
    }
    std::string answerTo(const std::string& key) override {
        return doubles::onQuery ? doubles::onQuery(key) : "enabled";
    }
};

struct Thrown {};  // no standard exception

class Instance final : public OverlapInstance {
  public:
    void start() override { note("start"); }
    void* getObject(const char* name, int option) override {
        note("getObject");
        doubles::note(name, option);
        return doubles::service();
    }

  private:
    // Throws in the operation that the environment names.
    static void note(const char* operation) {
        doubles::note(operation);
        const char* failing = getenv("TEST_THROWS");
        if (failing != nullptr && strcmp(failing, operation) == 0) {
            throw Thrown{};
        }
    }
    void reserved1() override {}
    void reserved2() override {}
    void reserved4() override {}
};

}  // namespace

namespace doubles {

Test::Test() {
    onQuery = nullptr;
    onCall = nullptr;
    threadsLeft = -1;
    clockStopped = false;
    zudebug::gZuCamLogLevel = ANDROID_LOG_INFO;
    zudebug::gZuCamLogGroup = 64;
    zudebug::gZuCamDebugMask = 1;
    takeJournal();
}

void Test::TearDown() {
    onLog = nullptr;  // the library logs until the process has ended
    clockStopped = false;
    const auto* info = testing::UnitTest::GetInstance()->current_test_info();
    const std::vector<std::string> expected = expectedLines(info->test_suite_name(), info->name());
    std::vector<std::string> actual = takeJournal();
    const std::string address = testing::PrintToString(static_cast<void*>(service()));
    for (size_t i = 0; i < std::min(expected.size(), actual.size()); ++i) {
        if (const size_t found = actual[i].find(address); found != std::string::npos) {
            actual[i].replace(found, address.size(), "SERVICE");
        }
        const size_t line = actual[i].find(".cpp:");
        if (line != std::string::npos && expected[i].find(".cpp:* ") != std::string::npos) {
            actual[i].replace(line, actual[i].find(' ', line) - line, ".cpp:*");
        }
    }
    EXPECT_EQ(joined(actual), joined(expected));
}

void note(const std::string& line) {
    std::lock_guard<std::mutex> lock(state().mutex);
    state().journal.push_back(line);
    if (getenv("TEST_ECHO") != nullptr) {
        puts(line.c_str());
    }
}

std::vector<std::string> takeJournal() {
    std::lock_guard<std::mutex> lock(state().mutex);
    return std::exchange(state().journal, {});
}

IntentAwareSys* service() {
    static Service service;
    return &service;
}

void stopClock(int64_t seconds, int64_t nanoseconds) {
    clockTime = {seconds, nanoseconds};
    clockReads = 0;
    clockStopped = true;
}

int locksOf(std::mutex* mutex, const std::function<void()>& run,
            const std::function<void()>& onLock) {
    counting = {true, mutex != nullptr ? mutex->native_handle() : nullptr, 0,
                onLock ? &onLock : nullptr};
    run();
    return std::exchange(counting, {}).locks;
}

bool isFree(std::mutex& mutex) {
    const auto tryLock = [&mutex] { return std::unique_lock(mutex, std::try_to_lock).owns_lock(); };
    return std::async(std::launch::async, tryLock).get();
}

}  // namespace doubles

// From here on, the definitions that the library binds to.

namespace zudebug {

const char* Log::zuaGroupToString(uint32_t group) {
    return group == 64 ? "group64" : "group?";
}

const char* Log::getFileName(const char* path) {
    return strrchr(path, '/') + 1;
}

void Log::logSystem(uint32_t group, const char* level, const char* fileName,
                    const char* functionName, int32_t line, const char* message, ...) {
    va_list arguments;
    va_start(arguments, message);
    const std::string text = std::string(zuaGroupToString(group)) + " " + fileName + ":" +
                             std::to_string(line) + " " + functionName + "()" +
                             formatted(message, arguments);
    va_end(arguments);
    std::unique_lock<std::mutex> lock(state().mutex);
    // One line with the Android log's if that one, just before, is alike but for its tag.
    const std::string twin = *level == 'I' ? "android 4" : "android 5";
    const std::string last = state().journal.empty() ? "" : state().journal.back();
    if (last.rfind(twin, 0) == 0 && last.size() > text.size() &&
        last.substr(last.size() - text.size()) == text) {
        state().journal.back() = level + last.substr(twin.size());
        return;
    }
    lock.unlock();
    doubles::note("system " + std::string(level) + " " + text);
}

}  // namespace zudebug

extern "C" {

int __android_log_print(int priority, const char* tag, const char* format, ...) {
    if (doubles::onLog) {
        doubles::onLog();
    }
    va_list arguments;
    va_start(arguments, format);
    doubles::note("android " + std::to_string(priority) + " " + tag + " " +
                  formatted(format, arguments));
    va_end(arguments);
    return 1;
}

// Called by the overlap library of these tests.
void* testOverlapInstance(const unsigned char* options) {
    doubles::note("options", std::vector<int>(options, options + 13));
    static Instance instance;
    return static_cast<OverlapInstance*>(&instance);
}

// The sanitizers' own wrappers, which must see threads and locks too.
// NOLINTBEGIN(bugprone-reserved-identifier): the names are theirs.
__attribute__((weak)) decltype(pthread_create) __interceptor_pthread_create;
__attribute__((weak)) decltype(pthread_mutex_lock) __interceptor_pthread_mutex_lock;
// NOLINTEND(bugprone-reserved-identifier)

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                   void* argument) noexcept {
    if (doubles::threadsLeft == 0) {
        return EAGAIN;
    }
    doubles::threadsLeft -= doubles::threadsLeft > 0 ? 1 : 0;
    static auto* const real =
            __interceptor_pthread_create != nullptr
                    ? __interceptor_pthread_create
                    : reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, __func__));
    return real(thread, attributes, run, argument);
}

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    if (counting.on && (counting.mutex == nullptr || counting.mutex == mutex)) {
        ++counting.locks;
        if (counting.onLock != nullptr) {
            (*counting.onLock)();
        }
    }
    static std::atomic<int (*)(pthread_mutex_t*)> real{__interceptor_pthread_mutex_lock};
    if (real == nullptr) {
        real = reinterpret_cast<int (*)(pthread_mutex_t*)>(dlsym(RTLD_NEXT, __func__));
    }
    return real.load()(mutex);
}

int setpriority(int which, id_t who, int priority) noexcept {
    EXPECT_EQ(which, PRIO_PROCESS);
    EXPECT_EQ(who, 0U);
    doubles::nice = priority;
    return static_cast<int>(syscall(SYS_setpriority, which, who, priority));
}

int clock_gettime(clockid_t clock, timespec* time) noexcept {
    if (!clockStopped || clock != CLOCK_MONOTONIC) {
        return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    }
    ++doubles::clockReads;
    *time = clockTime;
    return 0;
}

}  // extern "C"

int8_t property_get_bool(const char* key, int8_t default_value) {
    doubles::note("property " + std::string(key), static_cast<int>(default_value));
    const char* value = getenv(key + strlen("persist.vendor.camera."));
    return value != nullptr ? static_cast<int8_t>(atoi(value)) : default_value;
}

bool SetTaskProfiles(pid_t tid, const std::vector<std::string>& profiles, bool use_fd_cache) {
    doubles::profiles = testing::PrintToString(profiles);
    EXPECT_EQ(tid, gettid());
    EXPECT_TRUE(use_fd_cache);
    return true;
}
