// The system properties that the library reads.

#pragma once

namespace replay {

inline constexpr char kSupportedProperty[] = "persist.vendor.camera.camquill.supported";
inline constexpr char kForcedProperty[] = "persist.vendor.camera.infoSyncCollect.forceEnabled";

}  // namespace replay
