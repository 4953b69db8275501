#include "ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>  // WEXITSTATUS and its like, before <sys/wait.h> would define them
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "StopSignals.h"

namespace diff {

ChildProcess::ChildProcess(const std::vector<std::string>& command, const std::string& output) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, output.c_str(),
                                     O_WRONLY | O_CREAT | O_APPEND, 0600);
    posix_spawn_file_actions_adddup2(&files, STDOUT_FILENO, STDERR_FILENO);
    // The signals that this program waits for are to reach the child.
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    const int error =
            posix_spawn(&mPid, arguments[0], &files, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0) {
        mPid = -1;
        throw std::runtime_error(command[0] + ": cannot be run: " + std::strerror(error));
    }
}

ChildProcess::~ChildProcess() {
    if (mPid > 0) {
        end();
    }
}

int ChildProcess::wait() {
    int status = 0;
    while (waitpid(mPid, &status, WNOHANG) == 0) {
        StopSignals::wait();
        if (StopSignals::received() != 0) {
            status = end();
            break;
        }
    }
    mPid = -1;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

int ChildProcess::end() {
    int status = 0;
    kill(mPid, SIGTERM);
    while (waitpid(mPid, &status, 0) < 0 && errno == EINTR) {
    }
    mPid = -1;
    return status;
}

}  // namespace diff
