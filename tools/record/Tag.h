// The name that the recorder logs under.

#pragma once

namespace recording {

inline constexpr char kTag[] = "InfoSyncRecord";

}  // namespace recording
