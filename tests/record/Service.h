// What the tests' service does when the library calls it.

#pragma once

#include <functional>
#include <string>

struct Service {
    std::function<std::string()> answer;  // empty: "enabled"
    std::function<void()> report;         // at a report's end; empty: nothing
    void (*end)();                        // when the overlap library is closed; null: nothing
    void* object;                         // what the library is given
};

// In the overlap library.
inline constexpr char kService[] = "infosyncTestService";
