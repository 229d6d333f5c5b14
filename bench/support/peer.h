// A process that the measuring process talks to. It is ended at the end.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace bench {

/// Where this program is.
inline std::string ownFolder() {
    char path[4096];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    const std::string whole(path, length < 0 ? 0 : static_cast<std::size_t>(length));
    return whole.substr(0, whole.rfind('/'));
}

class Peer {
public:
    /// Starts the program beside this one. Its standard output goes nowhere. `inherited`, if not negative, is its
    /// standard input, and closed here.
    Peer(const std::string& program, const std::vector<std::string>& arguments, int inherited = -1) {
        const std::string path = ownFolder() + "/" + program;
        std::vector<char*> words{const_cast<char*>(path.c_str())};
        for (const std::string& argument : arguments) {
            words.push_back(const_cast<char*>(argument.c_str()));
        }
        words.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        if (inherited >= 0) {
            posix_spawn_file_actions_adddup2(&actions, inherited, STDIN_FILENO);
        }
        if (posix_spawn(&process, path.c_str(), &actions, nullptr, words.data(), environ) != 0) {
            std::fprintf(stderr, "bench: cannot start %s\n", path.c_str());
            std::exit(1);
        }
        posix_spawn_file_actions_destroy(&actions);
        if (inherited >= 0) {
            close(inherited);
        }
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer() {
        if (process > 0) {
            kill(process, SIGTERM);
            wait();
        }
    }

    /// Its exit status, when it has ended of itself.
    int wait() {
        int status = 0;
        waitpid(process, &status, 0);
        process = 0;
        return status;
    }

private:
    pid_t process = -1;
};

/// Two connected sockets; both close at exec.
struct SocketPair {
    explicit SocketPair(int type) {
        int both[2];
        if (socketpair(AF_UNIX, type | SOCK_CLOEXEC, 0, both) != 0) {
            std::perror("bench: socketpair");
            std::exit(1);
        }
        own = both[0];
        peers = both[1];
    }
    int own;
    int peers;
};

}  // namespace bench
