// Runs the reference service as a separate process for a test.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "become.h"
#include "eventually.h"
#include "run_directory.h"
#include "valid_json.h"

inline std::string fileText(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The lines that are not errors, which are for people; complete ones only, because a program may be killed.
inline std::string jsonLines(const std::string& output) {
    std::istringstream all(output.substr(0, output.rfind('\n') + 1));
    std::string lines;
    for (std::string line; std::getline(all, line);) {
        const bool isError =
            line.rfind("dtvctl: ", 0) == 0 || line.rfind("dvbshell: ", 0) == 0 || line.rfind("dtvmon: ", 0) == 0;
        lines += isError ? "" : line + "\n";
    }
    return lines;
}

/// A program whose output goes to files in the run directory. What dvbshell, dtvctl and dtvmon write with --json must
/// be what the schema says.
class ChildProcess {
public:
    /// `prepare` runs in the new process before the program.
    ChildProcess(const std::string& program, std::vector<std::string> arguments, const std::string& name,
                 Runner runner = Runner::emulator, const std::function<void()>& prepare = {})
        : outputPath(OwnRunDirectory::instance().path() + "/" + name + ".out"),
          logPath(OwnRunDirectory::instance().path() + "/" + name + ".log"),
          writesJson(isOurs(program) && std::find(arguments.begin(), arguments.end(), "--json") != arguments.end()) {
        // Remove the output of an earlier process with this name.
        unlink(outputPath.c_str());
        unlink(logPath.c_str());
        process = fork();
        if (process == 0) {
            setenv("DTV_LOG_FILE", logPath.c_str(), 1);
            const int output = open(outputPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
            dup2(output, STDOUT_FILENO);
            dup2(output, STDERR_FILENO);
            if (prepare) {
                prepare();
            }
            become(program, std::move(arguments), runner);
        }
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() { end(SIGKILL); }

    pid_t pid() const { return process; }
    std::string output() const { return fileText(outputPath); }
    std::string log() const { return fileText(logPath); }

    /// Sends the signal and waits for the end. Returns the exit code, or -1 if a signal ended the process.
    int end(int signal) {
        if (process <= 0) {
            return -1;
        }
        kill(process, signal);
        return wait();
    }
    int wait() {
        int status = 0;
        waitpid(process, &status, 0);
        process = -1;
        if (writesJson) {
            EXPECT_TRUE(isValidJson(jsonLines(output())));
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    static bool isOurs(const std::string& program) {
        const std::string name = program.substr(program.rfind('/') + 1);
        return name == "dvbshell" || name == "dtvctl" || name == "dtvmon";
    }

    std::string outputPath;
    std::string logPath;
    bool writesJson;
    pid_t process = -1;
};

/// dtvserviced on a file; ready when the constructor returns.
class ServiceProcess : public ChildProcess {
public:
    explicit ServiceProcess(const std::string& file = SAMPLE_FILE) : ServiceProcess(std::vector<std::string>{file}) {}
    explicit ServiceProcess(const std::vector<std::string>& files, const std::string& program = DTVSERVICED,
                            Runner runner = Runner::emulator)
        : ChildProcess(program, inputs(files), "service", runner) {
        eventually([this] { return output().find("ready") != std::string::npos; });
    }

private:
    static std::vector<std::string> inputs(const std::vector<std::string>& files) {
        std::vector<std::string> arguments;
        // Pass everything from the first option on unchanged.
        bool options = false;
        for (const std::string& word : files) {
            options = options || word.compare(0, 2, "--") == 0;
            if (!options) {
                arguments.emplace_back("--input");
            }
            arguments.push_back(word);
        }
        return arguments;
    }
};
