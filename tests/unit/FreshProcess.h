// Runs the program of FreshProcess.cpp, which has just loaded the library.

#pragma once

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "Doubles.h"

// What the program prints under a root directory of ROOTS, by lines. `environment` is as
// env takes it before a command, `things` are its arguments. Paths and handles are replaced.
inline std::vector<std::string> runFresh(const std::string& root, const std::string& environment,
                                         const std::string& things) {
    const std::string variables =
            "env -u camquill.supported TEST_ECHO=1 INFOSYNC_HOST_ROOT=" ROOTS "/" + root + " ";
    FILE* pipe = popen((variables + environment + " " FRESH_PROCESS " " + things).c_str(), "r");
    if (pipe == nullptr) {
        return {"cannot be run"};
    }
    std::vector<std::string> lines;
    char text[1024];
    while (fgets(text, sizeof(text), pipe) != nullptr) {
        std::string line = text;
        line.pop_back();
        doubles::replaceFrom(line, ROOTS, strlen(ROOTS), "ROOTS");
        doubles::replaceFrom(line, "= 0x", std::string::npos, "= HANDLE");
        doubles::replaceFrom(line, "Impl is 0x", std::string::npos, "Impl is SERVICE");
        doubles::replaceFrom(line, "(nil)", 5, "0");  // not every C++ library's null
        lines.push_back(line);
    }
    if (pclose(pipe) != 0) {
        lines.emplace_back("has failed");
    }
    return lines;
}
