// Measures what recording a call costs: infosync-record-bench ROUNDS, linked to the recorder ahead
// of the library. A round makes each call as it is recorded, in the library alone, and writes the
// recorded line to another file in the same folder. The time is the processor's.

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "InfoSynchronizerManager.h"
#include "RealLibrary.h"

namespace {

using Manager = camInfosync::InfoSynchronizerManager;
using Text = std::string;

const std::filesystem::path folder = std::getenv("INFOSYNC_RECORD");
int rounds = 0;

template <typename Function>
double nanoseconds(Function function) {
    constexpr int kCalls = 2000;
    const std::clock_t begin = std::clock();
    for (int i = 0; i < kCalls; ++i) {
        function();
    }
    return static_cast<double>(std::clock() - begin) * (1e9 / CLOCKS_PER_SEC) / kCalls;
}

double median(std::vector<double>& values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// The library's own definition of an operation.
template <typename Function>
Function inLibrary(Function recorded) {
    Dl_info symbol{};
    dladdr(recording::addressOf(recorded), &symbol);
    void* const library = dlopen("libcaminfosync.so", RTLD_NOW | RTLD_NOLOAD);
    return recording::functionAt<Function>(dlsym(library, symbol.dli_sname));
}

Text lastRecordedLine() {
    std::ifstream file(std::filesystem::directory_iterator(folder)->path());
    Text last;
    for (Text line; std::getline(file, line);) {
        last = line + '\n';
    }
    return last;
}

template <typename... Arguments>
void measure(const char* name, void (Manager::*recorded)(Text, Arguments...),
             Arguments... arguments) {
    Manager& manager = Manager::getInstance();
    const auto inLibraryAlone = inLibrary(recorded);
    (manager.*recorded)("IMG_2000000", arguments...);
    const Text line = lastRecordedLine();
    const Text path = folder / "bare";
    const int bare = open(path.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_TRUNC, 0600);
    std::vector<double> times[3];
    size_t written = 0;
    for (int round = 0; round < rounds; ++round) {
        times[0].push_back(nanoseconds([&] { (manager.*recorded)("IMG_2000000", arguments...); }));
        times[1].push_back(
                nanoseconds([&] { (manager.*inLibraryAlone)("IMG_2000000", arguments...); }));
        times[2].push_back(nanoseconds([&] {
            written += static_cast<size_t>(write(bare, line.data(), line.size())) == line.size();
        }));
    }
    close(bare);
    std::filesystem::remove(path);
    const double call = median(times[1]);
    const double bareWrite = median(times[2]);
    std::printf("%-32s%8zu%10.0f%10.0f%10.0f%8.2f\n", name, line.size(), median(times[0]), call,
                bareWrite, (median(times[0]) - call) / bareWrite);
}

}  // namespace

int main(int argc, char** argv) {
    rounds = argc == 2 ? std::atoi(argv[1]) : 0;
    if (rounds < 1) {
        std::cerr << "usage: infosync-record-bench ROUNDS\n";
        return 2;
    }
    std::printf("%-32s%8s%10s%10s%10s%8s\n", "", "bytes", "recorded", "call", "write", "ratio");
    Manager::getInstance().registerSnapshotRequestRecord("IMG_2000000");
    measure<int32_t>("updateAnchorFrame", &Manager::updateAnchorFrame, 3);
    measure<float, int32_t, float, int64_t>("updateAnchor3aInfo", &Manager::updateAnchor3aInfo,
                                            1.8F, 125, 210.5F, 33000000);
    measure<uint32_t>("updateSnapshotTimeInfo", &Manager::updateSnapshotTimeInfo, 1);
    measure<Text, double, double, double>("updateNodeProcTime", &Manager::updateNodeProcTime, "hdr",
                                          1520700123.5, 5.25, 1520700129.2);
    measure<camInfosync::InfoSyncType>("snapshotRequestInfoFlush",
                                       &Manager::snapshotRequestInfoFlush,
                                       camInfosync::INFO_SYNC_TYPE_COLLECT);
}
