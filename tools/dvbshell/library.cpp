// Loading the library.
#include "library.h"

#include <dlfcn.h>
#include <unistd.h>

#include <climits>

namespace dvbshell {

namespace {

using QueryInterface = int (*)(const char*, velmora::dtv::IDTVUnknown**);

std::string programDirectory() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    const std::string program(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    return program.substr(0, program.rfind('/'));
}

}  // namespace

std::string defaultLibraryPath() {
    return programDirectory() + "/../lib/libbrowserdvbapi.so";
}

void* loadFunction(const std::string& path, const char* name, std::string& error) {
    void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        error = "cannot load " + path + ": " + dlerror();
        return nullptr;
    }
    void* const function = dlsym(handle, name);
    if (function == nullptr) {
        error = path + " has no " + name;
    }
    return function;
}

velmora::dtv::IDTVUnknown* loadInterface(const std::string& path, const char* name, std::string& error) {
    const auto query = reinterpret_cast<QueryInterface>(loadFunction(path, "DTVAPI_QueryInterface", error));
    velmora::dtv::IDTVUnknown* found = nullptr;
    if (query != nullptr && query(name, &found) != 0) {
        error = path + " does not give the interface " + name;
    }
    return found;
}

velmora::dtv::DvbAPIInterface* loadDvbApi(const std::string& path, std::string& error) {
    return static_cast<velmora::dtv::DvbAPIInterface*>(loadInterface(path, "DvbAPIInterface", error));
}

}  // namespace dvbshell
