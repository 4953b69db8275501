// A camera HAL in small: a burst of eight stills, told to the library by three threads as a
// pipeline tells it. The sixth fails: its merge node gives up.

#include <pthread.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <future>
#include <ratio>
#include <string>
#include <thread>

#include <InfoSynchronizerManager.h>

namespace {

auto& manager = camInfosync::InfoSynchronizerManager::getInstance();

constexpr uint32_t kFailingShot = 5;

struct Shot {
    std::string image;
    std::promise<void> requested;
    std::promise<void> resulted;
};
std::array<Shot, 8> shots;

double nowMs() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(now).count();
}

void sendRequest(Shot& shot, uint32_t number) {
    shot.image = "BURST_20261121_101500_" + std::to_string(number + 1);
    manager.registerSnapshotRequestRecord(shot.image);
    manager.updateSnapshotTimeInfo(shot.image, 0);
    manager.updateFrameInfo(shot.image, 900 + number, "120455000000000", {0, 2}, 0);
    manager.updateUIInfo(shot.image, camInfosync::REQUEST_TYPE_DEFAULT, 7, 1, 1.5F, "burst");
    manager.updateRequestInfo(shot.image, 8, 0, true, 120455000000000, {}, {40, 41});
    shot.requested.set_value();
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

void takeResult(Shot& shot, uint32_t number) {
    shot.requested.get_future().wait();
    manager.updateAnchor3aInfo(shot.image, 1.8F, 100 + static_cast<int32_t>(number), 1850, 4000000);
    manager.updateVndResultInfo(shot.image, 40, 0);
    manager.updateVndResultInfo(shot.image, 41, 0);
    manager.updateSnapshotTimeInfo(shot.image, 2);
    shot.resulted.set_value();
}

void mergeFrames(Shot& shot, uint32_t number) {
    shot.resulted.get_future().wait();
    manager.updateZuAlgoInfo(shot.image, {"merge:2", "beauty"});
    const double start = nowMs();
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
    const bool fails = number == kFailingShot;
    manager.updateNodeProcTime(shot.image, "merge", start, fails ? -1.0 : nowMs(), nowMs());
    manager.updateNodeProcState(shot.image, "merge", fails ? 4 : 0);
    manager.snapshotRequestInfoFlush(shot.image, camInfosync::INFO_SYNC_TYPE_COLLECT);
    manager.unregisterSnapshotRequestRecord(shot.image);
}

std::thread forAllShots(const char* name, void (*work)(Shot& shot, uint32_t number)) {
    return std::thread([name, work] {
        pthread_setname_np(pthread_self(), name);
        for (uint32_t number = 0; number < shots.size(); ++number) {
            work(shots[number], number);
        }
    });
}

}  // namespace

int main() {
    for (std::thread& thread :
         std::array{forAllShots("request", sendRequest), forAllShots("result", takeResult),
                    forAllShots("node", mergeFrames)}) {
        thread.join();
    }
}
