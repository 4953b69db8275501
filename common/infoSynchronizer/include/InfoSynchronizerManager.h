// The library's front: the manager that the camera pipeline reports its snapshots to.

#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <cutils/properties.h>

// IWYU pragma: begin_exports
#include "Export.h"
#include "InfoCollector.h"
#include "InfoSyncType.h"
#include "InfoSynchronizer.h"
#include "RequestRecord.h"
#include "RequestRecordQueue.h"
#include "ThreadPool.h"
// IWYU pragma: end_exports

namespace camInfosync {

// The two property switches of snapshot collection, read once while the including file's
// binary is loaded.
// Deliberate: internal linkage, so every file that includes this header has its own pair. The
// library decides by the pair of the manager's source.
[[maybe_unused]] static const bool camQuillSupported =
        property_get_bool("persist.vendor.camera.camquill.supported", 0) != 0;
[[maybe_unused]] static const bool infoSyncCollectForceEnabled =
        property_get_bool("persist.vendor.camera.infoSyncCollect.forceEnabled", 0) != 0;

// Keeps one record per snapshot in flight and reports it when the pipeline flushes it.
//
// Collection is on if the property "persist.vendor.camera.camquill.supported" is true and
// either "persist.vendor.camera.infoSyncCollect.forceEnabled" is true or the intent-aware
// object answers the command "snapshotInfoCollectEnable" with "enabled". Three operations are
// switched by it: registration, unregistration and flush. They ask for the answer on every
// call. While collection is off they do nothing else, except that the flush logs the switch.
//
// Two managers: GetInstance() and getInstance() give different objects. Registration,
// unregistration and flush always work on the getInstance() manager; updates work on the
// manager they are called on. Call everything on getInstance().
//
// Thread safety: every operation may be called from any thread at any time, and runs on it.
// Operations on records wait for each other on the queue's one mutex, and a flush holds it for
// the whole report: the intent-aware object must not call an operation on records from within a
// report. A log must call nothing of this library from within a log line: lines are logged with
// mutexes held, and while a manager is being built. Threads must have stopped calling when the
// process exits or the library is unloaded.
//
// Errors: nothing is returned. A call that cannot do its work has no effect, and most log one
// warning. std::bad_alloc passes. So do, from the switched operations and request, what the
// intent-aware object throws, and from the switched operations and time stages other than 0,
// what building the getInstance() manager throws. The mutex is then free, and what was written
// stays.
class INFOSYNC_EXPORT InfoSynchronizerManager {
  public:
    // Builds the three synchronizers, an empty queue and a pool of one worker. Throws what the
    // constructor of ThreadPool throws, and std::bad_alloc; nothing is left behind then.
    InfoSynchronizerManager();
    ~InfoSynchronizerManager();
    InfoSynchronizerManager(const InfoSynchronizerManager&) = delete;
    InfoSynchronizerManager& operator=(const InfoSynchronizerManager&) = delete;

    // The manager of the record operations: built on the first call, from any thread, and
    // destroyed at process exit or when the library is unloaded. If building throws, the next
    // call tries again.
    // Deliberate: not inline. A caller that compiled it too would own a second manager wherever
    // the dynamic linker does not merge the two: with this library, or the caller, loaded with
    // local scope.
    static InfoSynchronizerManager& getInstance();

    // Hands `in` to a synchronizer, whether collection is on or off. COLLECT and COLLECT_ALT:
    // reports the RequestRecord at `in`, without a lock: the record must not change until the
    // call returns. `out` is not touched. CMD: stores the answer (a const char* owned by the
    // executor) for the command key at `in` in `*out`; see CmdExecutor::requestCmd. A null `in`
    // or `out` that is needed is logged as a warning; a null key stores null in `*out`. Any other
    // type has no effect.
    void request(InfoSyncType type, const void* in, void** out);

    // Starts a record under `imageName`. An existing record is kept and a warning logged.
    void registerSnapshotRequestRecord(std::string imageName);

    // Drops the record; a warning is logged if there is none.
    void unregisterSnapshotRequestRecord(std::string imageName);

    // Reports the record through the collector of INFO_SYNC_TYPE_COLLECT before it returns. The
    // record stays. Any other type, or an unknown name, reports nothing.
    void snapshotRequestInfoFlush(std::string imageName, InfoSyncType type);

    // The updates. Each writes the fields that its arguments name, in place of what they held
    // unless its comment says otherwise. The record is found by the name it was registered under,
    // except where an operation says otherwise, and an unknown name is logged as a warning.
    //
    // To mark a snapshot as failed is to set its record's hasError, to append a text to errorInfo
    // and to append the image name to the queue's errorImageNames, each time anew. The texts are
    // "vendor result error", "node process time out" and "node process error".

    // Appends `camIds` to those already there. The name that is stored here makes the record
    // visible to the list form of updateZuAlgoInfo, to updateNodeProcTime and to
    // updateNodeProcState: call it first.
    void updateFrameInfo(std::string imageName, uint32_t frameNumber, std::string timestamp,
                         std::vector<uint32_t> camIds, uint32_t frameExtra);

    void updateRequestInfo(std::string imageName, int32_t reqValueA, int32_t reqValueB,
                           bool reqFlag, uint64_t reqValue64, std::vector<int32_t> reqIdsA,
                           std::vector<int32_t> expectedResultIds);

    // Values in the caller's units, here and in updateAnchor3aInfo. The report leaves out the
    // fraction of `zoomRatio`.
    void updateUIInfo(std::string imageName, RequestType requestType, uint32_t camMode,
                      int32_t faceDetect, float zoomRatio, std::string uiExtra);

    void updateAnchor3aInfo(std::string imageName, float fstop, int32_t iso, float lux,
                            int64_t exposureTime);

    void updateAnchorFrame(std::string imageName, int32_t anchorFrame);

    // Stores the text of `errorCode` (0 to 4) under `resultId`; an id above 2^31 - 1 is kept as
    // the negative number of the same 32 bits. While the record holds fewer results than ids are
    // expected, it first marks all expected ids as "not_return", those that have come already
    // included: give all results of one snapshot after its last updateRequestInfo, and expect no
    // id twice, which leaves fewer results than ids. A code other than 0 marks the
    // snapshot as failed; one outside 0 to 4 is logged as a warning and has no effect.
    void updateVndResultInfo(std::string imageName, uint32_t resultId, int32_t errorCode);

    // Replaces all vendor results. Marks no failure, whatever the texts say.
    void updateVndResultInfo(std::string imageName, SnapshotInfo::VendorResultInfo info);

    // Replaces the list of algorithms. What precedes an entry's first ':' is the algorithm's key;
    // a key that is new to the record starts with the times A and B 0.0 and the state "none", and
    // no time C. Finds the record by its frame's image name; an unknown name is not warned about.
    void updateZuAlgoInfo(std::string imageName, std::vector<std::string> algoList);

    // Replaces all algorithm information.
    void updateZuAlgoInfo(std::string imageName, SnapshotInfo::ZuAlgoInfo info);

    // Marks the snapshot as failed and appends `text` to its error texts, but does not list its
    // name among the queue's errorImageNames. A null text is logged as a warning and has no effect.
    void updateSnapshotErrorInfo(std::string imageName, const char* text);

    // Replaces the queue-wide post-processing information. Belongs to no snapshot.
    void updatePostProcInfo(std::map<std::string, uint32_t> info);

    // Stamps a time stage (an index into TimeStageToChar) with the milliseconds from the
    // record's creation to this call: seconds and the rest are counted apart, which may give one
    // too many, and in 32 bits, so that after 2^31 of them, some 24.8 days, they go on at -2^31.
    // Stage 0 stores -1 and sets requestTime; 3 and 13 stamp both their texts; 6 stores its
    // milliseconds less those of stage 4, which is put in place as 0 if it is missing; 7 and 11
    // store 0. Stages above 14 are ignored. For a known image, stages other than 0 first build the
    // getInstance() manager if there is none; if that throws, nothing is stored.
    void updateSnapshotTimeInfo(std::string imageName, uint32_t stage);

    // Stores ready values, in milliseconds and of any size, under stage names. Other keys are
    // ignored, and stages that are not given keep what they have.
    void updateSnapshotTimeInfo(std::string imageName, std::map<std::string, int64_t> timeInfo);

    // Stores a node's start, second and completion time, in the caller's units. A second time
    // of -1.0 marks the snapshot as failed. Finds the record by its frame's image name; an
    // unknown name is not warned about.
    void updateNodeProcTime(std::string imageName, std::string nodeName, double first,
                            double second, double third);

    // Stores the text of `state` (0 to 4) for a node. A state other than 0 marks the snapshot
    // as failed; one outside 0 to 4 is logged as a warning and has no effect. Finds the record
    // by its frame's image name; an unknown name is not warned about.
    void updateNodeProcState(std::string imageName, std::string nodeName, int32_t state);

    // Stores ready state texts by node; other nodes keep theirs. Marks no failure, whatever the
    // texts say. Finds the record by its frame's image name; an unknown name is not warned about.
    void updateNodeProcState(std::string imageName, std::map<std::string, std::string> states);

    // Open to whoever inspects records at a desk. The pointers are fixed from construction to
    // destruction; what the queue holds is guarded by its mutex. A task on the pool must not use
    // its manager: tasks left at the end run when the queue and the synchronizers are gone.
    std::unique_ptr<ThreadPool> mThreadPool;
    std::shared_ptr<RequestRecordQueue> mRequestRecordQueue;
    std::map<InfoSyncType, std::shared_ptr<InfoSynchronizer>> mSynchronizers;
};

}  // namespace camInfosync

// Returns the address of a manager, an InfoSynchronizerManager*, that is not the one of
// getInstance(): built on the first call, from any thread, and destroyed as that one is.
// Throws as the manager's constructor does; the next call then tries again.
extern "C" INFOSYNC_EXPORT void* GetInstance();
