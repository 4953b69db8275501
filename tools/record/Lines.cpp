#include "Lines.h"

#include <sys/prctl.h>
#include <sys/types.h>
#include <time.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Line.h"

namespace recording {
namespace {

constexpr int64_t kNanoseconds = 1000000000;

int64_t readClock(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<int64_t>(time.tv_sec) * kNanoseconds + time.tv_nsec;
}

void putMoment(Line& line, const Moment& moment) {
    line.field("at", moment.at);
    line.fields(moment.written);
}

// What this thread's lines say of it. Without a destructor, which would outlive the recorder.
struct ThreadFields {
    int64_t writtenAt;
    size_t size;
    char text[160];  // enough for 16 bytes of a name, each as an escape

    void write(Line& scratch, int64_t at) {
        char name[16] = {};
        prctl(PR_GET_NAME, name, 0, 0, 0);
        writeThread(scratch, name, gettid());
        size = scratch.text().copy(text, sizeof(text), 1);
        writtenAt = at;
    }
};

thread_local ThreadFields threadFields{0, 0, {}};

}  // namespace

Moment Moment::now(Line& scratch) {
    constexpr int64_t kKept = kNanoseconds / 1000;
    const int64_t at = readClock(CLOCK_MONOTONIC);
    ThreadFields& fields = threadFields;
    if (fields.size == 0 || at - fields.writtenAt >= kKept) {
        fields.write(scratch, at);
    }
    return {at, {fields.text, fields.size}};
}

void writeThread(Line& line, std::string_view name, pid_t tid) {
    line.begin();
    line.field("thread", name);
    line.field("tid", tid);
}

void writeHeader(Line& line, const Header& header, uint64_t part, uint64_t calls,
                 const Answers& answers, const Names& cut, size_t mostCutBytes) {
    constexpr std::string_view kSupported = "persist.vendor.camera.camquill.supported";
    constexpr std::string_view kForced = "persist.vendor.camera.infoSyncCollect.forceEnabled";
    line.begin();
    line.field("format", "camInfosync capture log");
    line.field("version", "1.0");
    line.field("library", INFOSYNC_VERSION);
    line.field("pid", header.pid);
    line.field("process", header.process);
    line.object("properties", [&] {
        line.field(kSupported, header.supported);
        line.field(kForced, header.forceEnabled);
    });
    line.field("service", header.service);
    line.field("answers", answers);
    line.field("startMonotonic", readClock(CLOCK_MONOTONIC));
    line.field("startReal", readClock(CLOCK_REALTIME));
    line.field("part", part);
    line.field("calls", calls);
    if (const size_t left = line.fieldUpTo("cut", cut, mostCutBytes); left > 0) {
        line.field("cutMore", left);
    }
    line.end();
}

void beginCall(Line& line, uint64_t number, const Moment& moment, bool isOther,
               std::string_view call) {
    line.begin();
    line.field("n", number);
    putMoment(line, moment);
    if (isOther) {
        line.field("manager", "GetInstance");
    }
    line.field("call", call);
}

void beginAnswer(Line& line, uint64_t number, const Moment& moment, std::string_view key) {
    line.begin();
    line.field("answered", number);
    putMoment(line, moment);
    line.field("key", key);
}

void writeEnd(Line& line, uint64_t calls, uint64_t next) {
    line.begin();
    line.field("end", true);
    line.field("calls", calls);
    if (next != 0) {
        line.field("next", next);
    }
    line.end();
}

}  // namespace recording
