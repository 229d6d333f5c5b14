// Loading the library.
#include "library.h"

#include <dlfcn.h>

namespace tvbrowser {

namespace {

using velmora::dtv::IDTVUnknown;
using velmora::dvbservice::BrowserAITCatcher;
using QueryInterface = int (*)(const char*, IDTVUnknown**);
using GetCatcher = BrowserAITCatcher* (*)();

constexpr const char* kGetCatcher = "_ZN7velmora10dvbservice17BrowserAITCatcher11getInstanceEv";
constexpr const char* kUpdateChannel = "_ZN7velmora10dvbservice17BrowserAITCatcher24updateCurrentChannelInfoEtttt";
constexpr const char* kUpdateAit =
    "_ZN7velmora10dvbservice17BrowserAITCatcher9updateAITENSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE";

/// The file, opened. Once something is missing, everything else counts as missing, and the first reason stays.
class OpenFile {
public:
    explicit OpenFile(const std::string& newPath) : path(newPath), handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
        if (handle == nullptr) {
            why = "cannot load " + path + ": " + dlerror();
        }
    }

    template <typename Function>
    Function function(const char* name) {
        void* const found = why.empty() ? dlsym(handle, name) : nullptr;
        if (found == nullptr && why.empty()) {
            why = path + " has no " + name;
        }
        return reinterpret_cast<Function>(found);
    }

    template <typename Interface>
    Interface* interface(const char* name) {
        const auto query = function<QueryInterface>("DTVAPI_QueryInterface");
        IDTVUnknown* found = nullptr;
        if (query != nullptr && query(name, &found) != 0) {
            why = path + " does not give the interface " + name;
        }
        return static_cast<Interface*>(found);
    }

    const std::string& error() const { return why; }

private:
    const std::string path;
    void* const handle;
    std::string why;
};

}  // namespace

std::optional<Library> loadLibrary(const std::string& path, std::string& error) {
    OpenFile file(path);
    Library library;
    library.api = file.interface<velmora::dtv::DvbAPIInterface>("DvbAPIInterface");
    library.filters = file.interface<velmora::dtv::DVBSectionInterface>("SectionFilterAPI");
    library.ait = file.interface<velmora::dtv::DVBAITSectionInterface>("DvbAITAPI");
    const auto getCatcher = file.function<GetCatcher>(kGetCatcher);
    library.catcher.updateCurrentChannelInfo = file.function<AitCatcher::Update>(kUpdateChannel);
    library.catcher.updateAIT = file.function<AitCatcher::UpdateAit>(kUpdateAit);
    if (!file.error().empty()) {
        error = file.error();
        return std::nullopt;
    }
    library.catcher.catcher = getCatcher();
    return library;
}

}  // namespace tvbrowser
