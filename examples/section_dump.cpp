// A section dump: loads the library with dlopen and prints sections of a PID that differ, in hexadecimal.
//   section_dump LIBRARY PID TABLE_ID COUNT
#include <dlfcn.h>
#include <dvb_helpers/section_filter.h>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <optional>
#include <string>

namespace {

using velmora::dtv::DVBSectionInterface;
using velmora::dtv::IDTVUnknown;
using velmora::dtv::helpers::SectionDelivery;
using velmora::dtv::helpers::SectionFilter;
using velmora::dtv::helpers::SectionPattern;

/// Sections on their way from the delivery thread to main().
class Sections {
public:
    void put(const unsigned char* section, unsigned int length) {
        const std::lock_guard<std::mutex> lock(mutex);
        sections.emplace_back(section, section + length);
        filled.notify_one();
    }
    /// The next section, or none within ten seconds.
    std::optional<std::string> take() {
        std::unique_lock<std::mutex> lock(mutex);
        if (!filled.wait_for(lock, std::chrono::seconds(10), [this] { return !sections.empty(); })) {
            return std::nullopt;
        }
        std::string section = std::move(sections.front());
        sections.pop_front();
        return section;
    }

private:
    std::mutex mutex;
    std::condition_variable filled;
    std::deque<std::string> sections;  // guarded by mutex
};

/// The library stays loaded: its threads run until the process ends.
DVBSectionInterface* loadFilters(const char* path) {
    using QueryInterface = int (*)(const char*, IDTVUnknown**);
    void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    void* const function = library == nullptr ? nullptr : dlsym(library, "DTVAPI_QueryInterface");
    if (function == nullptr) {
        std::fprintf(stderr, "section_dump: %s\n", dlerror());
        return nullptr;
    }
    IDTVUnknown* found = nullptr;
    reinterpret_cast<QueryInterface>(function)("SectionFilterAPI", &found);
    return static_cast<DVBSectionInterface*>(found);
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 5) {
        std::fprintf(stderr, "usage: section_dump LIBRARY PID TABLE_ID COUNT\n");
        return 2;
    }
    const auto pid = static_cast<unsigned int>(std::strtoul(arguments[2], nullptr, 0));
    const auto table = static_cast<unsigned char>(std::strtoul(arguments[3], nullptr, 0));
    DVBSectionInterface* const filters = loadFilters(arguments[1]);
    if (filters == nullptr) {
        return 1;
    }
    Sections sections;
    // The filter closes before the sections end. Then its receiver runs no more, so it may use them by reference.
    const SectionFilter filter(
        *filters, pid, SectionPattern::table(table),
        [&sections](const unsigned char* section, unsigned int length) { sections.put(section, length); },
        SectionDelivery::changed);
    if (!filter.isOpen()) {
        std::fprintf(stderr, "section_dump: the DTV service has not opened the filter\n");
        return 1;
    }
    for (long wanted = std::strtol(arguments[4], nullptr, 0); wanted > 0; --wanted) {
        const std::optional<std::string> section = sections.take();
        if (!section) {
            std::fprintf(stderr, "section_dump: no section for ten seconds\n");
            return 1;
        }
        for (const char byte : *section) {
            std::printf("%02X", static_cast<unsigned int>(static_cast<unsigned char>(byte)));
        }
        std::printf("\n");
    }
    return 0;
}
