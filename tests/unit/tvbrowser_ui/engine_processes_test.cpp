// The end of the processes that this one has started.
#include "engine_processes.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace tvbrowser {

TEST(TheEnginesProcesses, HaveAllEndedAtTheEnd) {
    constexpr int kChildren = 3;
    for (int child = 0; child < kChildren; ++child) {
        if (fork() == 0) {
            signal(SIGTERM, SIG_IGN);
            while (true) {
                pause();
            }
        }
    }
    endEngineProcesses();
    for (int child = 0; child < kChildren; ++child) {
        int status = 0;
        EXPECT_GT(waitpid(-1, &status, WNOHANG), 0);
        EXPECT_TRUE(WIFSIGNALED(status));
    }
    endEngineProcesses();
}

}  // namespace tvbrowser
