// Creates the test's own run directory before the platform reads its settings, and removes it at the end.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

class OwnRunDirectory : public testing::Environment {
public:
    OwnRunDirectory() {
        char name[] = "/tmp/dtv-test-XXXXXX";
        path_ = mkdtemp(name);
        owner = getpid();
        setenv("DTV_RUN_DIR", path_.c_str(), 1);
        setenv("DTV_LOG_FILE", (path_ + "/log").c_str(), 1);
        setenv("DTV_LOG_LEVEL", "ordinary", 1);
    }
    ~OwnRunDirectory() override {
        if (getpid() == owner) {
            std::error_code ignored;
            std::filesystem::remove_all(path_, ignored);
        }
    }
    const std::string& path() const { return path_; }

    static OwnRunDirectory& instance() {
        static auto* const directory =
            static_cast<OwnRunDirectory*>(testing::AddGlobalTestEnvironment(new OwnRunDirectory));
        return *directory;
    }

private:
    std::string path_;
    pid_t owner = 0;
};
