// Opens a filter and prints its sections.
#include "sections.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <memory>

#include "dvb_section_interface.h"
#include "for_life.h"
#include "hex.h"
#include "library.h"

namespace dvbshell {

namespace {

/// Copies sections into a queue. Both live as long as the process, because a section may arrive at any time.
class QueueingClient final : public velmora::dtv::SectionFilterClient {
public:
    /// `idName` is what the filter's number is: "pid", or "sid" of a PMT request.
    QueueingClient(EventQueue& newQueue, const char* newIdName) : queue(newQueue), idName(newIdName) {}

    void onSectionData(const std::string&, unsigned int id, const unsigned char* data, unsigned int length) override {
        Event event;
        event.kind = EventKind::filtered;
        event.name = "onSectionData";
        event.values = {namedValue(idName, id)};
        event.section.assign(reinterpret_cast<const char*>(data), length);
        queue.put(std::move(event));
    }

private:
    EventQueue& queue;
    const char* idName;
};

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

const unsigned char* bytesOf(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

/// One open filter or PMT request; the destructor closes it.
class OpenFilter {
public:
    OpenFilter(velmora::dtv::DVBSectionInterface& newFilters, EventQueue& queue, const SectionsRequest& newRequest)
        : filters(newFilters),
          request(newRequest),
          client(forLife(new QueueingClient(queue, newRequest.pmtOfService ? "sid" : "pid"))) {
        session = filters.generateSessionName();
        opened = request.pmtOfService
                     ? filters.startPMTRequest(&client, session, request.pid) == 0
                     : filters.startSection(&client, session, request.pid, bytesOf(request.match),
                                            bytesOf(request.mask), static_cast<int>(request.match.size()));
    }
    OpenFilter(const OpenFilter&) = delete;
    OpenFilter& operator=(const OpenFilter&) = delete;
    ~OpenFilter() {
        if (request.pmtOfService) {
            filters.stopPMTRequest(&client, session);
        } else if (opened) {
            filters.stopSection(&client, session);
        }
    }
    bool isOpen() const { return opened; }

private:
    velmora::dtv::DVBSectionInterface& filters;
    const SectionsRequest& request;
    QueueingClient& client;
    std::string session;
    bool opened = false;
};

/// Prints a section or appends it to the file; false when the file cannot be written.
bool show(const Event& event, const SectionsRequest& request, std::FILE* file, Printer& printer) {
    switch (request.show) {
        case SectionsRequest::Show::hexadecimal:
            printer.note(hexOf(event.section));
            return true;
        case SectionsRequest::Show::file:
            return std::fwrite(event.section.data(), 1, event.section.size(), file) == event.section.size();
        default:
            printer.print(event, "");
            return true;
    }
}

int fail(const std::string& text) {
    std::fprintf(stderr, "dvbshell: %s\n", text.c_str());
    return 1;
}

std::string what(const SectionsRequest& request) {
    return request.pmtOfService ? "the PMT of service " + std::to_string(request.pid)
                                : "sections of PID " + std::to_string(request.pid);
}

int follow(const SectionsRequest& request, EventQueue& queue, std::FILE* file, Printer& printer) {
    const Clock::time_point end = Clock::now() + request.longest;
    unsigned int came = 0;
    while (!request.count || came < *request.count) {
        const std::optional<Event> event = queue.take(end);
        if (!event) {
            break;
        }
        if (!show(*event, request, file, printer)) {
            return fail("cannot write " + request.path + ": " + std::strerror(errno));
        }
        ++came;
    }
    const unsigned int wanted = request.count.value_or(1);
    return came >= wanted ? 0
                          : fail(what(request) + ": " + std::to_string(came) + " of " + std::to_string(wanted) +
                                 " came in " + std::to_string(request.longest.count()) + " s");
}

}  // namespace

bool parseUnsigned(const std::string& text, unsigned int most, unsigned int& number) {
    const bool hexadecimal = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data() + (hexadecimal ? 2 : 0), end, number, hexadecimal ? 16 : 10);
    return read.ec == std::errc() && read.ptr == end && number <= most;
}

bool setTable(const std::string& text, SectionsRequest& request) {
    constexpr unsigned int kMostByte = 0xFF;
    const std::size_t slash = text.find('/');
    unsigned int table = 0;
    unsigned int bits = kMostByte;
    if (!parseUnsigned(text.substr(0, slash), kMostByte, table) ||
        (slash != std::string::npos && !parseUnsigned(text.substr(slash + 1), kMostByte, bits))) {
        return false;
    }
    if (request.match.empty()) {
        request.match.resize(1);
        request.mask.resize(1);
    }
    request.match[0] = static_cast<char>(table);
    request.mask[0] = static_cast<char>(bits);
    return true;
}

int runSections(const std::string& libraryPath, const SectionsRequest& request, Printer& printer) {
    std::string error;
    auto* const filters =
        static_cast<velmora::dtv::DVBSectionInterface*>(loadInterface(libraryPath, "SectionFilterAPI", error));
    if (filters == nullptr) {
        return fail(error);
    }
    File file;
    if (request.show == SectionsRequest::Show::file) {
        file.reset(std::fopen(request.path.c_str(), "wbe"));
        if (!file) {
            return fail("cannot write " + request.path + ": " + std::strerror(errno));
        }
    }
    EventQueue& queue = forLife(new EventQueue);
    int result = 0;
    {
        const OpenFilter filter(*filters, queue, request);
        if (!filter.isOpen()) {
            return fail("the DTV service did not open a filter for " + what(request));
        }
        result = follow(request, queue, file.get(), printer);
    }
    if (file && std::fclose(file.release()) != 0) {
        return fail("cannot write " + request.path + ": " + std::strerror(errno));
    }
    return result;
}

}  // namespace dvbshell
