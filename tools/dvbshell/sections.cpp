// Prints and saves sections.
#include "sections.h"

#include <cerrno>
#include <cstring>
#include <memory>

#include "arguments.h"
#include "message_fields.h"

namespace dvbshell {

namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

int failWriting(Session& session, const std::string& path) {
    return fail(session, "cannot write " + path + ": " + std::strerror(errno));
}

/// Prints a section or appends it to the file; false when the file cannot be written.
bool show(Session& session, const Event& event, const SectionsRequest& request, std::FILE* file) {
    switch (request.show) {
        case SectionsRequest::Show::hexadecimal:
            session.printer.note(message_fields::hexadecimal(event.section));
            return true;
        case SectionsRequest::Show::file:
            return std::fwrite(event.section.data(), 1, event.section.size(), file) == event.section.size();
        default:
            session.print(event);
            return true;
    }
}

int judge(Session& session, const std::string& what, unsigned int came, unsigned int wanted,
          std::chrono::seconds longest) {
    if (session.connection.isGone()) {
        return kNoService;
    }
    return came >= wanted ? kDone
                          : failInTime(session, what + ": " + std::to_string(came) + " of " + std::to_string(wanted) +
                                                    " came in " + std::to_string(longest.count()) + " s");
}

int follow(Session& session, const SectionsRequest& request, EventQueue& queue, std::FILE* file) {
    const Clock::time_point end = Clock::now() + request.longest;
    unsigned int came = 0;
    while (!request.count || came < *request.count) {
        const std::optional<Event> event = session.next(queue, end);
        if (!event) {
            break;
        }
        if (!show(session, *event, request, file)) {
            return failWriting(session, request.path);
        }
        ++came;
    }
    return judge(session, "sections of PID " + std::to_string(request.pid), came, request.count.value_or(1),
                 request.longest);
}

std::optional<Event> awaitPmtEvent(Session& session, unsigned int serviceId, Clock::time_point until) {
    EventQueue& queue = newSectionQueue();
    const Filter filter(session, queue, serviceId);
    return session.next(queue, until);
}

}  // namespace

bool setTable(const std::string& text, Pattern& pattern) {
    const std::size_t slash = text.find('/');
    const std::optional<std::uint64_t> table = command_line::parseNumber(text.substr(0, slash));
    const std::optional<std::uint64_t> bits =
        slash == std::string::npos ? kMostByte : command_line::parseNumber(text.substr(slash + 1));
    if (!table || *table > kMostByte || !bits || *bits > kMostByte) {
        return false;
    }
    if (pattern.match.empty()) {
        pattern.match.resize(1);
        pattern.mask.resize(1);
    }
    pattern.match[0] = static_cast<char>(*table);
    pattern.mask[0] = static_cast<char>(*bits);
    return true;
}

int followSections(Session& session, const SectionsRequest& request) {
    File file;
    EventQueue& queue = newSectionQueue();
    int result = kDone;
    {
        const Filter filter(session, queue, request.pid, request.pattern);
        if (!filter.isOpen()) {
            return fail(session, "the DTV service did not open a filter on PID " + std::to_string(request.pid));
        }
        // Not before, because it empties the file.
        if (request.show == SectionsRequest::Show::file) {
            file.reset(std::fopen(request.path.c_str(), "wbe"));
            if (!file) {
                return failWriting(session, request.path);
            }
        }
        result = follow(session, request, queue, file.get());
    }
    return file && std::fclose(file.release()) != 0 ? failWriting(session, request.path) : result;
}

int followPmt(Session& session, unsigned int serviceId, std::chrono::seconds longest) {
    const std::optional<Event> event = awaitPmtEvent(session, serviceId, Clock::now() + longest);
    if (event) {
        session.print(*event);
    }
    return judge(session, "the PMT of service " + std::to_string(serviceId), event ? 1 : 0, 1, longest);
}

std::optional<std::string> awaitPmt(Session& session, unsigned int serviceId, Clock::time_point until) {
    const std::optional<Event> event = awaitPmtEvent(session, serviceId, until);
    return event ? std::make_optional(event->section) : std::nullopt;
}

}  // namespace dvbshell
