// A browser that starts, loads the library and sends its first command. Prints one figure.
//   starting_browser CPU time LIBRARY       microseconds from dlopen to the first command sent
//   starting_browser CPU raw SOCKET         microseconds to connect a raw socket and send a packet
//   starting_browser CPU memory LIBRARY     KiB of memory that the library takes beyond what it needs to be loaded
#include <dlfcn.h>
#include <dvb_api_interface.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "cpus.h"

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "starting_browser: %s\n", what.c_str());
    std::exit(1);
}

void* load(const std::string& path) {
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        fail(dlerror());
    }
    return library;
}

void sendFirstCommand(const std::string& path) {
    using Query = int (*)(const char*, velmora::dtv::IDTVUnknown**);
    const auto query = reinterpret_cast<Query>(dlsym(load(path), "DTVAPI_QueryInterface"));
    velmora::dtv::IDTVUnknown* found = nullptr;
    if (query == nullptr || query("DvbAPIInterface", &found) != 0) {
        fail("the library has no DvbAPIInterface");
    }
    auto& api = *static_cast<velmora::dtv::DvbAPIInterface*>(found);
    while (api.startOSDDetection(0) != 0) {
        sched_yield();
    }
}

void sendRaw(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    const int socket = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    const char packet[32] = {};
    if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        send(socket, packet, sizeof packet, MSG_NOSIGNAL) < 0) {
        fail("no raw socket");
    }
}

template <typename Work>
double microsecondsOf(Work work) {
    const Clock::time_point begin = Clock::now();
    work();
    return std::chrono::duration<double, std::micro>(Clock::now() - begin).count();
}

/// The number behind a key of a file of /proc, in KiB.
double kibOf(const std::string& line, const char* key) {
    return line.rfind(key, 0) == 0 ? std::strtod(line.c_str() + std::strlen(key), nullptr) : 0;
}

double anonymousKib() {
    std::ifstream status("/proc/self/status");
    double kib = 0;
    for (std::string line; std::getline(status, line);) {
        kib += kibOf(line, "RssAnon:");
    }
    return kib;
}

/// Resident pages of the library's file that are still the file's.
double fileKib(const std::string& name) {
    std::ifstream maps("/proc/self/smaps");
    bool isLibrary = false;
    double kib = 0;
    for (std::string line; std::getline(maps, line);) {
        const bool isHead = line.find(':') > line.find('-');
        if (isHead) {
            isLibrary = line.find(name) != std::string::npos;
        } else if (isLibrary) {
            kib += kibOf(line, "Rss:") - kibOf(line, "Anonymous:");
        }
    }
    return kib;
}

/// The libraries that it needs are there already. What grows then is the library's file, its data, what it asked for,
/// and what its platform asked for to connect, such as the stack and the buffers of the transport thread.
double memoryOf(const std::string& path) {
    load(path.substr(0, path.rfind('/')) + "/libdtvplatform.so");
    load("libuuid.so.1");
    const double before = anonymousKib();
    sendFirstCommand(path);
    return anonymousKib() - before + fileKib(path.substr(path.rfind('/')));
}

}  // namespace

int main(int, char** arguments) {
    bench::pinTo(std::atoi(arguments[1]));
    const std::string what = arguments[2];
    const std::string path = arguments[3];
    const double figure = what == "time"  ? microsecondsOf([&] { sendFirstCommand(path); })
                          : what == "raw" ? microsecondsOf([&] { sendRaw(path); })
                                          : memoryOf(path);
    std::printf("%.3f\n", figure);
    std::fflush(stdout);
    _exit(0);
}
