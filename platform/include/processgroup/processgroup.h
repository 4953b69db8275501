// Task profiles, as Android's libprocessgroup declares them.

#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

// Puts thread `tid` into the named task profiles. Returns whether that worked.
bool SetTaskProfiles(pid_t tid, const std::vector<std::string>& profiles,
                     bool use_fd_cache = false);
