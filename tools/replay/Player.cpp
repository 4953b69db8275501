// Checks a capture log, plays it through the library, and sums up.

#include <dlfcn.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "CaptureLog.h"
#include "InfoSynchronizerManager.h"
#include "LogFile.h"
#include "NamedThreads.h"
#include "Printable.h"
#include "Progress.h"
#include "ReplayOptions.h"
#include "ServiceReport.h"

namespace replay {
namespace {

using camInfosync::InfoSynchronizerManager;

constexpr size_t kMostErrorsShown = 10;
constexpr size_t kMostNamesShown = 10;
constexpr size_t kMostThreads = 64;
constexpr size_t kLongestName = 60;

// Reads the lines of a log as steps, and collects what is wrong with them.
class StepReader {
  public:
    explicit StepReader(LogFile& log) : mLog(log) {}

    // Remembers how long the log is: to be called after its last line.
    void noteLength() { mLength = mLog.position(); }
    bool isAtNotedLength() const { return mLog.position() == mLength; }

    // Goes back to the first line; image names have this suffix from now on.
    void restart(std::string imageSuffix) {
        mLog.rewind();
        mImageSuffix = std::move(imageSuffix);
    }

    bool next(CaptureStep& step) {
        if (!mLog.next(mLine)) {
            return false;
        }
        step = {};
        mErrors.clear();
        if (mLog.lineIsTooLong()) {
            mErrors.push_back({"line", "is longer than " + std::to_string(LogFile::kLongestLine)});
        } else {
            step = readCaptureLine(mLine, mImageSuffix, mErrors);
        }
        if (mErrors.empty() && !step.thread.empty() && mThreads.insert(step.thread).second &&
            mThreads.size() > kMostThreads) {
            mThreads.erase(step.thread);
            mErrors.push_back({"thread", "is one more than " + std::to_string(kMostThreads)});
        }
        return true;
    }

    const std::vector<LineError>& errors() const { return mErrors; }  // of the last line
    size_t lineSize() const { return mLine.size(); }
    const LogFile& log() const { return mLog; }
    std::string place() const {
        return printable(mLog.name()) + ':' + std::to_string(mLog.lineNumber());
    }

  private:
    LogFile& mLog;
    uint64_t mLength = 0;
    std::string mLine;
    std::string mImageSuffix;
    std::vector<LineError> mErrors;
    std::set<std::string> mThreads;
};

// Looks at the whole log and lists what is wrong on standard error. Returns whether it is good.
bool check(StepReader& reader, Progress& progress) {
    uint64_t count = 0;
    reader.restart({});
    for (CaptureStep step; reader.next(step);) {
        for (const LineError& error : reader.errors()) {
            if (++count <= kMostErrorsShown) {
                std::cerr << reader.place() << ": " << error.field << ": " << error.what << '\n';
            }
        }
        progress.show(reader.log().position());
    }
    reader.noteLength();
    if (count > kMostErrorsShown) {
        std::cerr << "... and " << count - kMostErrorsShown << " more\n";
    }
    return count == 0;
}

// The file behind `path`; null if there is none to write. "-" is standard output.
class Output {
  public:
    // Throws std::runtime_error if the file cannot be written.
    Output(const std::string& path, const std::string& logPath) {
        std::error_code ignored;
        if (path.empty() || path == "-") {
            mOpen = path.empty() ? nullptr : stdout;
            return;
        }
        if (std::filesystem::equivalent(path, logPath, ignored)) {
            throw std::runtime_error(path + ": is the log itself");
        }
        mFile.reset(std::fopen(path.c_str(), "w"));
        if (mFile == nullptr) {
            throw std::runtime_error(path + ": cannot write: " + std::strerror(errno));
        }
        mOpen = mFile.get();
    }
    std::FILE* get() const { return mOpen; }

  private:
    File mFile;
    std::FILE* mOpen = nullptr;  // mFile's, or standard output
};

bool isWritten(std::FILE* file) {
    return file == nullptr || (std::fflush(file) == 0 && std::ferror(file) == 0);
}

struct Counts {
    uint64_t calls = 0;
    uint64_t flushes = 0;
};

// Plays a checked log through the library.
class Player {
  public:
    Player(StepReader& reader, ServiceReport& report, Progress& progress)
        : mReader(reader), mReport(report), mProgress(progress) {}

    // Returns when all threads are done.
    Counts play(uint32_t rounds) {
        for (uint32_t round = 1; round <= rounds; ++round) {
            mReader.restart(round == 1 ? std::string() : '#' + std::to_string(round));
            playRound(round * mReader.log().size());
        }
        return mCounts;
    }

  private:
    void playRound(uint64_t doneBefore) {
        for (CaptureStep step; mReader.next(step);) {
            if (!mReader.errors().empty()) {
                throwChanged();
            }
            mProgress.show(doneBefore + mReader.log().position());
            take(std::move(step));
        }
        mThreads.wait();
        if (!mReader.isAtNotedLength()) {
            throwChanged();
        }
    }

    [[noreturn]] void throwChanged() const {
        throw std::runtime_error(mReader.place() + ": has changed since it was checked");
    }

    void take(CaptureStep step) {
        switch (step.kind) {
            case CaptureStep::Kind::kNothing:
                break;
            case CaptureStep::Kind::kBarrier:
                mThreads.wait();
                break;
            case CaptureStep::Kind::kSleep:
                std::this_thread::sleep_for(step.sleep);
                break;
            case CaptureStep::Kind::kCall:
                call(std::move(step));
                break;
        }
    }

    void call(CaptureStep step) {
        mCounts.calls += 1;
        mCounts.flushes += step.isFlush ? 1 : 0;
        auto task = [this, isFlush = step.isFlush, run = std::move(step.run)] {
            run(mManager);
            if (isFlush) {
                mReport.drain(mManager);
            }
        };
        if (step.thread.empty()) {
            task();
        } else {
            mThreads.post(step.thread, mReader.lineSize(), std::move(task));
        }
    }

    InfoSynchronizerManager& mManager = InfoSynchronizerManager::getInstance();
    StepReader& mReader;
    ServiceReport& mReport;
    Progress& mProgress;
    Counts mCounts;
    NamedThreads mThreads;
};

// Asked once before the log is played: the executor's first question must not overlap another.
std::string askSwitch() {
    void* answer = nullptr;
    InfoSynchronizerManager::getInstance().request(camInfosync::INFO_SYNC_TYPE_CMD,
                                                   "snapshotInfoCollectEnable", &answer);
    return static_cast<const char*>(answer);
}

std::string collectionState(const std::string& answer) {
    if (!camInfosync::camQuillSupported) {
        return "off: persist.vendor.camera.camquill.supported is not true";
    }
    if (camInfosync::infoSyncCollectForceEnabled) {
        return "on: forced by persist.vendor.camera.infoSyncCollect.forceEnabled";
    }
    if (camInfosync::InfoSynchronizer::mIntentAwareImpl == nullptr) {
        return "off: there is no service to ask";
    }
    return (answer == "enabled" ? "on" : "off") + std::string(": the service answers \"") +
           printable(answer, kLongestName) + '"';
}

// The first names of a map, in its order, as ": A, B, ... and N more".
template <typename Map, typename Text>
std::string firstNames(const Map& map, Text text) {
    std::string names;
    size_t shown = 0;
    for (const auto& entry : map) {
        if (shown == kMostNamesShown) {
            return names + ", ... and " + std::to_string(map.size() - shown) + " more";
        }
        names += (shown++ == 0 ? ": " : ", ") + text(entry);
    }
    return names;
}

std::string recordsLeft(const camInfosync::RequestRecordQueue& queue) {
    return std::to_string(queue.records.size()) + firstNames(queue.records, [](const auto& entry) {
               return printable(entry.first, kLongestName);
           });
}

std::string failedImages(const camInfosync::RequestRecordQueue& queue) {
    std::map<std::string, uint64_t> errorsByName;
    for (const std::string& name : queue.errorImageNames) {
        ++errorsByName[name];
    }
    return std::to_string(errorsByName.size()) + firstNames(errorsByName, [](const auto& entry) {
               return printable(entry.first, kLongestName) + " (" + std::to_string(entry.second) +
                      (entry.second == 1 ? " error)" : " errors)");
           });
}

std::string totals(const Counts& counts, const ServiceReport& report, const std::string& answer) {
    camInfosync::RequestRecordQueue& queue =
            *InfoSynchronizerManager::getInstance().mRequestRecordQueue;
    std::lock_guard<std::mutex> lock(queue.mutex);
    return "totals\n  collection     " + collectionState(answer) + "\n  calls made     " +
           std::to_string(counts.calls) + "\n  flush calls    " + std::to_string(counts.flushes) +
           "\n  reports        " + std::to_string(report.reports()) + "\n  service calls  " +
           std::to_string(report.calls()) + "\n  records left   " + recordsLeft(queue) +
           "\n  failed images  " + failedImages(queue) + '\n';
}

TakeServiceCalls* findService() {
    void* library = dlopen(kOverlapServicePath, RTLD_NOW | RTLD_NOLOAD);
    return library != nullptr
                   ? reinterpret_cast<TakeServiceCalls*>(dlsym(library, kTakeServiceCalls))
                   : nullptr;
}

enum ExitStatus { kPlayed = 0, kFailed = 1, kUnusable = 2 };

int playInto(StepReader& reader, const ReplayOptions& options, std::FILE* json,
             Progress& progress) {
    std::FILE* readable = options.quiet || json == stdout ? nullptr : stdout;
    ServiceReport report(findService(), json, readable);
    const std::string answer = askSwitch();
    const Counts counts = Player(reader, report, progress).play(options.repeat);
    if (readable != nullptr) {
        std::fputs(totals(counts, report, answer).c_str(), readable);
    }
    if (!isWritten(json) || !isWritten(readable)) {
        std::cerr << "infosync-replay: cannot write the output: " << std::strerror(errno) << '\n';
        return kUnusable;
    }
    return kPlayed;
}

int run(const ReplayOptions& options) {
    int statusOfException = kUnusable;
    try {
        LogFile log(options.log);
        StepReader reader(log);
        const bool reportOnTerminal = options.json != "-" && isatty(STDOUT_FILENO) != 0;
        Progress progress(!options.quiet && !reportOnTerminal,
                          log.size() * (uint64_t{options.repeat} + 1));
        if (!check(reader, progress)) {
            return kUnusable;
        }
        const Output json(options.json, options.log);
        statusOfException = kFailed;
        return playInto(reader, options, json.get(), progress);
    } catch (const std::exception& error) {
        std::cerr << "infosync-replay: " << printable(error.what()) << '\n';
        return statusOfException;
    }
}

}  // namespace
}  // namespace replay

extern "C" __attribute__((visibility("default"))) int infosyncPlay(const ReplayOptions* options) {
    return replay::run(*options);
}
