// A capture as the tests of the views use it.

#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>

#include "Capture.h"
#include "Finding.h"

namespace view {

// Registered at 1 s, flushed 31 ms and removed 40 ms later.
inline Capture sampleCapture(uint64_t number, const std::string& name) {
    Capture capture;
    capture.number = number;
    capture.name = name;
    capture.registered = 1'000'000'000;
    capture.flushed = 1'031'000'000;
    capture.removed = 1'040'000'000;
    capture.isRegistered = capture.isFlushed = capture.isRemoved = true;
    return capture;
}

inline Node sampleNode(const std::string& name, double start, std::optional<double> completion) {
    Node node;
    node.name = name;
    node.start = start;
    node.second = start + 1;
    node.completion = completion;
    node.state = "OK";
    return node;
}

inline Finding sampleFinding(FindingKind kind, const std::string& text, uint64_t line = 0) {
    return {kind, text, "", {0, line}, {}};
}

// What `write` writes.
inline std::string writtenBy(const std::function<void(std::FILE*)>& write) {
    char* text = nullptr;
    size_t size = 0;
    std::FILE* file = open_memstream(&text, &size);
    write(file);
    std::fclose(file);
    std::string written(text, size);
    std::free(text);  // NOLINT: open_memstream has it from malloc
    return written;
}

}  // namespace view
