// An overlap library made of bare tables of function pointers. It shares no declaration with
// the library: what the library calls is found by slot alone.

#include "RawOverlap.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

using Slot = void (*)();

struct Object {
    const Slot* table;
};

std::string received;  // what was called, in order

void wrongSlot() {
    std::fputs("a slot was called that the library does not use\n", stderr);
    std::abort();
}

template <typename Function>
Slot slot(Function* function) {
    return reinterpret_cast<Slot>(function);
}

void setParam(Object*, const std::string& id, const std::string& key, const std::string& value) {
    received += "21 " + id + " " + key + "=" + value + "\n";
}

void reportEvent(Object*, const std::string& id, const std::string& event) {
    received += "23 " + id + " " + event + "\n";
}

void finishReport(Object*, std::string id, int32_t first, int32_t second) {
    received += "24 " + id + " " + std::to_string(first) + " " + std::to_string(second) + "\n";
    id.assign(100, 'x');  // by value: ours to write to
}

std::string queryValue(Object*, std::string key) {
    const bool known = key == "snapshotInfoCollectEnable";
    key.assign(100, 'x');
    return known ? "enabled" : "unknown";
}

#define FIVE_WRONG wrongSlot, wrongSlot, wrongSlot, wrongSlot, wrongSlot
const Slot serviceTable[] = {
        FIVE_WRONG,         FIVE_WRONG,          FIVE_WRONG,
        FIVE_WRONG,         slot(&setParam),     slot(&wrongSlot),
        slot(&reportEvent), slot(&finishReport), slot(&queryValue),
};
Object service{serviceTable};

void start(Object*) {
    received += "3\n";
}

void* getObject(Object*, const char* name, int option) {
    received += std::string("5 ") + name + " " + std::to_string(option) + "\n";
    return std::strcmp(name, "IntentAwareSys") == 0 ? &service : nullptr;
}

const Slot instanceTable[] = {
        wrongSlot, wrongSlot, slot(&start), wrongSlot, slot(&getObject),
};
Object instance{instanceTable};

}  // namespace

extern "C" {

Object* GetInstance(const unsigned char* options) {
    received += "options";
    for (int i = 0; i < 13; ++i) {
        received += " " + std::to_string(options[i]);
    }
    received += "\n";
    return &instance;
}

const char* takeReceived() {
    static std::string taken;
    taken.swap(received);
    received.clear();
    return taken.c_str();
}

}  // extern "C"
