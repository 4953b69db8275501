// The baseline: the library's job as a careful team would write it by hand. One structure per
// snapshot in a map behind a mutex, its texts built by a JSON library, its log lines by a log
// library and switched off at run time. Built as a shared library, as the real one is.
//
// It takes its arguments by reference, keeps one entry per node instead of four, passes the
// mutex once, and reports from one copy of the structure with the mutex released.

#pragma once

#include <time.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "InfoSyncType.h"
#include "RequestRecord.h"

class IntentAwareSys;
namespace spdlog {
class logger;
}

class HandWritten {
  public:
    // What the overlap library gave at load time; a benchmark may put its own in place.
    static IntentAwareSys* service;

    // How the texts are put into JSON: with nested initializer lists, as that library's manual
    // shows it, or one field after the other, which is quicker.
    enum class JsonStyle { kLiteral, kByField };

    explicit HandWritten(JsonStyle style);
    ~HandWritten();

    // Asks the service.
    bool isCollecting() const;

    void registerSnapshotRequestRecord(const std::string& image);
    void unregisterSnapshotRequestRecord(const std::string& image);
    void snapshotRequestInfoFlush(const std::string& image, camInfosync::InfoSyncType type);
    void updateFrameInfo(const std::string& image, uint32_t frameNumber,
                         const std::string& timestamp, const std::vector<uint32_t>& camIds,
                         uint32_t frameExtra);
    void updateRequestInfo(const std::string& image, int32_t reqValueA, int32_t reqValueB,
                           bool reqFlag, uint64_t reqValue64, const std::vector<int32_t>& reqIdsA,
                           const std::vector<int32_t>& expectedResultIds);
    void updateUIInfo(const std::string& image, camInfosync::RequestType requestType,
                      uint32_t camMode, int32_t faceDetect, float zoomRatio,
                      const std::string& uiExtra);
    void updateAnchor3aInfo(const std::string& image, float fstop, int32_t iso, float lux,
                            int64_t exposureTime);
    void updateAnchorFrame(const std::string& image, int32_t anchorFrame);
    void updateVndResultInfo(const std::string& image, uint32_t resultId, int32_t errorCode);
    void updateVndResultInfo(const std::string& image, const std::map<int32_t, std::string>& info);
    void updateZuAlgoInfo(const std::string& image, const std::vector<std::string>& algoList);
    void updateZuAlgoInfo(const std::string& image,
                          const camInfosync::SnapshotInfo::ZuAlgoInfo& info);
    void updateSnapshotErrorInfo(const std::string& image, const char* text);
    void updatePostProcInfo(const std::map<std::string, uint32_t>& info);
    void updateSnapshotTimeInfo(const std::string& image, uint32_t stage);
    void updateSnapshotTimeInfo(const std::string& image,
                                const std::map<std::string, int64_t>& timeInfo);
    void updateNodeProcTime(const std::string& image, const std::string& node, double first,
                            double second, double third);
    void updateNodeProcState(const std::string& image, const std::string& node, int32_t state);
    void updateNodeProcState(const std::string& image,
                             const std::map<std::string, std::string>& states);

  private:
    struct Node {
        double first = 0.0;
        double second = 0.0;
        double third = 0.0;
        bool completed = false;
        std::string state = "none";
    };
    struct Snapshot {
        timespec createTime{};
        timespec requestTime{};
        uint32_t frameNumber = 0;
        std::string timestamp;
        std::vector<uint32_t> camIds;
        uint32_t frameExtra = 0;
        int32_t requestType = 1;
        uint32_t camMode = 0;
        int32_t faceDetect = 0;
        float zoomRatio = 0.0F;
        std::string uiExtra;
        int32_t reqValueA = 0;
        int32_t reqValueB = 0;
        int32_t anchorFrame = 0;
        bool reqFlag = false;
        uint64_t reqValue64 = 0;
        std::vector<int32_t> reqIdsA;
        std::vector<int32_t> expectedResultIds;
        std::map<int32_t, std::string> vendorResults;
        std::vector<std::string> algoList;
        std::map<std::string, Node> nodes;
        float fstop = 0.0F;
        int32_t iso = 0;
        float lux = 0.0F;
        int64_t exposureTime = 0;
        std::map<std::string, int64_t> timeInfo;
        bool hasError = false;
        std::vector<std::string> errors;
    };

    Snapshot* find(const std::string& image);
    void fail(Snapshot& snapshot, const std::string& image, const char* text);
    void report(const std::string& image, const Snapshot& snapshot) const;

    const bool mByField;
    std::shared_ptr<spdlog::logger> mLogger;
    std::mutex mMutex;  // guards what follows
    std::map<std::string, Snapshot> mSnapshots;
    std::map<std::string, uint32_t> mPostProcInfo;
    std::vector<std::string> mFailedImages;
};
