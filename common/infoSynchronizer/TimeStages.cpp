#include "TimeStages.h"

#include <iterator>
#include <vector>

#include "RequestRecord.h"
#include "Saturate.h"

namespace camInfosync {

static_assert(kTimeStages == std::size(TimeStageToChar));

const std::string& stageKey(uint32_t stage) {
    static const std::vector<std::string> keys(std::begin(TimeStageToChar),
                                               std::end(TimeStageToChar));
    return keys[stage];
}

// Deliberate: no borrow from the seconds, division toward zero, and the low 32 bits only.
int32_t intervalMs(const timespec& begin, const timespec& end) {
    const int64_t ms = (end.tv_sec - begin.tv_sec) * int64_t{1000} +
                       (end.tv_nsec - begin.tv_nsec) / int64_t{1000000};
    return static_cast<int32_t>(static_cast<uint32_t>(ms));
}

// Deliberate: stages 3 and 13 write two keys, 6 a difference, 7 and 11 a constant 0.
void storeStage(std::map<std::string, int64_t>& timeInfo, uint32_t stage, int32_t interval) {
    switch (stage) {
        case 3:
        case 13:
            timeInfo[stageKey(3)] = interval;
            timeInfo[stageKey(13)] = interval;
            break;
        case 6: {
            // A request stage that is missing counts as 0, and is put in place as such.
            const auto requested = static_cast<double>(timeInfo[stageKey(4)]);
            timeInfo[stageKey(6)] = truncateSaturated<int64_t>(interval - requested);
            break;
        }
        case 7:
        case 11:
            timeInfo[stageKey(stage)] = 0;
            break;
        default:
            timeInfo[stageKey(stage)] = interval;
            break;
    }
}

}  // namespace camInfosync
