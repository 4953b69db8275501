// A desk has no task profiles: every thread stays in the group that it is in.

#include <processgroup/processgroup.h>

#include <sys/types.h>

#include <string>
#include <vector>

bool SetTaskProfiles(pid_t /*tid*/, const std::vector<std::string>& /*profiles*/,
                     bool /*use_fd_cache*/) {
    return true;
}
