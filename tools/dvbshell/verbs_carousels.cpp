// The verbs of object carousels: carousel, carousel get. The interface has no operation for them, so they read
// sections.
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "carousel_reader.h"
#include "service_streams.h"
#include "si/tree_folder.h"
#include "verbs.h"

namespace dvbshell {

namespace {

using Found = si::CarouselTree::Found;
using Kind = si::CarouselObject::Kind;
using State = si::CarouselTree::State;
using Visited = si::CarouselTree::Visited;

constexpr std::chrono::seconds kLongestForCarousel{20};
constexpr std::chrono::seconds kLongestForFile{60};

struct CarouselRequest {
    StreamChoice choice;
    std::string path;  ///< of the wanted file
    std::optional<std::string> out;
    std::chrono::seconds longest;
};

const char* nameOf(Kind kind) {
    switch (kind) {
        case Kind::directory:
            return "directory";
        case Kind::file:
            return "file";
        case Kind::stream:
            return "stream";
        case Kind::streamEvent:
            return "stream events";
        default:
            return "other";
    }
}

std::string describeEvents(const si::CarouselObject& object) {
    std::string text = "  stream events";
    for (const si::CarouselObject::EventName& event : object.events) {
        text += (&event == &object.events.front() ? ": " : ", ") + event.name + " (" + std::to_string(event.id) + ")";
    }
    return text;
}

/// What a line says of an object, behind its path.
std::string describe(const Visited& visited) {
    const si::CarouselObject* const object = visited.found.object.get();
    if (object == nullptr) {
        return visited.found.state == State::awaited ? "  has not arrived"
               : visited.reference.elsewhere         ? "  leads to another service"
                                                     : "  is not in the carousel";
    }
    switch (object->kind) {
        case Kind::directory:
            return "/";
        case Kind::file:
            return "  " + std::to_string(object->content.size) + " bytes";
        case Kind::streamEvent:
            return describeEvents(*object);
        default:
            return std::string("  ") + nameOf(object->kind);
    }
}

void reportObject(Session& session, std::uint32_t carousel, bool isOnlyOne, const Visited& visited) {
    const std::string path = "/" + visited.path;
    if (visited.depth == 0 && visited.found.object) {
        return;  // the service gateway
    }
    const std::string text =
        (isOnlyOne ? "" : "carousel " + std::to_string(carousel) + "  ") + path + describe(visited);
    std::vector<message_fields::FieldValue> values = {namedValue("carousel_id", std::uint64_t{carousel}),
                                                      namedValue("object_path", path),
                                                      namedValue("object_kind", std::string(nameOf(visited.kind)))};
    if (visited.found.object && visited.found.object->kind == Kind::file) {
        values.push_back(namedValue("object_size", std::uint64_t{visited.found.object->content.size}));
    }
    values.push_back(namedValue("text", text));
    session.report({text}, "object", std::move(values));
}

void reportTrees(Session& session, CarouselReader& reader) {
    constexpr std::size_t kMostLines = 10000;
    const auto trees = reader.trees();
    for (const auto& [carousel, tree] : trees) {
        std::size_t lines = 0;
        tree->visit([&, number = carousel](const Visited& visited) {
            if (++lines <= kMostLines || session.json) {
                reportObject(session, number, trees.size() == 1, visited);
            }
        });
        if (lines > kMostLines && !session.json) {
            session.printer.note(std::to_string(lines - kMostLines) + " more");
        }
    }
}

int writeTrees(Session& session, CarouselReader& reader, const std::string& folder) {
    const auto trees = reader.trees();
    bool isWhole = true;
    for (const auto& [carousel, tree] : trees) {
        const std::string path = trees.size() == 1 ? folder : folder + "-" + std::to_string(carousel);
        const si::TreeWritten written =
            si::writeTree(*tree, {path, std::numeric_limits<std::size_t>::max(), nullptr,
                                  [&session](const std::string& line) { fail(session, line); }});
        if (written.how != si::TreeWritten::How::whole) {
            return fail(session, "cannot write " + written.error);
        }
        session.report({std::to_string(written.files) + " files in " + path}, "carousel",
                       {namedValue("carousel_id", std::uint64_t{carousel}),
                        namedValue("text", std::to_string(written.files) + " files in " + path)});
        isWhole = isWhole && tree->isComplete();
    }
    return isWhole ? kDone : failInTime(session, "not all of the carousel has come");
}

std::string shownSeconds(Clock::duration time) {
    constexpr std::size_t kDigits = 32;
    char text[kDigits];
    std::snprintf(text, sizeof text, "%.2f s", std::chrono::duration<double>(time).count());
    return text;
}

void reportProgress(Session& session, CarouselReader& reader) {
    const bool isKnown = reader.cycle() > Clock::duration::zero();
    const std::string text = reader.progress() + (isKnown ? "; a cycle takes " + shownSeconds(reader.cycle()) : "");
    std::vector<message_fields::FieldValue> values;
    if (isKnown) {
        const auto cycle = std::chrono::duration_cast<std::chrono::milliseconds>(reader.cycle());
        values.push_back(namedValue("cycle", static_cast<std::uint64_t>(cycle.count())));
    }
    values.push_back(namedValue("text", text));
    session.report({text}, "carousel", std::move(values));
}

/// The reader of the wanted carousels; null, after a line, without their streams.
std::unique_ptr<CarouselReader> beginReading(Session& session, const CarouselRequest& request) {
    const ChosenStreams streams = findStreams(session, request.choice);
    return streams.pids.empty() ? nullptr : std::make_unique<CarouselReader>(session, streams.pmt, streams.pids);
}

int readCarousel(Session& session, const CarouselRequest& request) {
    const std::unique_ptr<CarouselReader> reader = beginReading(session, request);
    if (reader) {
        reader->read(Clock::now() + request.longest, CarouselReader::Reports::everything,
                     [&] { return reader->isComplete() && reader->cycle() > Clock::duration::zero(); });
    }
    if (session.connection.isGone()) {
        return kNoService;
    }
    if (!reader || reader->hasFailed()) {
        return kFailed;
    }
    if (!reader->hasModules()) {
        return failInTime(session, "no module of a carousel came in " + std::to_string(request.longest.count()) + " s");
    }
    reportProgress(session, *reader);
    reportTrees(session, *reader);
    return request.out ? writeTrees(session, *reader, *request.out) : kDone;
}

/// The first that is here; else one that is awaited, while a carousel has not begun or may still name the path.
Found findIn(CarouselReader& reader, const std::string& path) {
    Found best{reader.hasBegun() ? State::absent : State::awaited};
    for (const auto& [carousel, tree] : reader.trees()) {
        Found found = tree->find(path);
        if (found.state == State::here) {
            return found;
        }
        best.state = found.state == State::awaited ? State::awaited : best.state;
    }
    return best;
}

int writeBytes(Session& session, si::Bytes content, const std::optional<std::string>& path) {
    // The session's own output is for lines: it changes what a terminal should not get.
    std::FILE* const file = path ? std::fopen(path->c_str(), "wbe") : stdout;
    const std::string name = path.value_or("the output");
    if (file == nullptr) {
        return fail(session, "cannot write " + name + ": " + std::strerror(errno));
    }
    const bool isWritten = std::fwrite(content.data, 1, content.size, file) == content.size;
    const bool isFlushed = std::fflush(file) == 0;
    const bool isClosed = !path || std::fclose(file) == 0;
    return isWritten && isFlushed && isClosed ? kDone
                                              : fail(session, "cannot write " + name + ": " + std::strerror(errno));
}

int giveFile(Session& session, const CarouselRequest& request, const si::CarouselObject& file) {
    if (session.json) {
        std::vector<message_fields::FieldValue> values = {namedValue("object_path", request.path),
                                                          namedValue("object_kind", std::string(nameOf(file.kind))),
                                                          namedValue("object_size", std::uint64_t{file.content.size})};
        if (!request.out) {
            values.push_back(
                namedValue("data", std::string(reinterpret_cast<const char*>(file.content.data), file.content.size)));
        }
        values.push_back(namedValue("text", request.path + "  " + std::to_string(file.content.size) + " bytes"));
        session.report({}, "object", std::move(values));
        return request.out ? writeBytes(session, file.content, request.out) : kDone;
    }
    if (!request.out && isatty(STDOUT_FILENO) != 0) {
        return fail(session, "a file is not shown on a terminal: give --out FILE");
    }
    return writeBytes(session, file.content, request.out);
}

int getFile(Session& session, const CarouselRequest& request) {
    const std::unique_ptr<CarouselReader> reader = beginReading(session, request);
    Found found{State::awaited};
    if (reader) {
        reader->read(Clock::now() + request.longest, CarouselReader::Reports::nothing, [&] {
            found = findIn(*reader, request.path);
            return found.state != State::awaited;
        });
    }
    if (session.connection.isGone()) {
        return kNoService;
    }
    if (!reader || reader->hasFailed()) {
        return kFailed;
    }
    if (found.state == State::awaited) {
        return failInTime(session, request.path + " did not come in " + std::to_string(request.longest.count()) + " s");
    }
    if (found.state == State::absent || found.object->kind != Kind::file) {
        return fail(session,
                    request.path + (found.object ? std::string(" is no file, but of kind ") + nameOf(found.object->kind)
                                                 : std::string(" is not in the carousel")));
    }
    return giveFile(session, request, *found.object);
}

StreamChoice readCarouselChoice(ArgumentReader& reader, const std::optional<std::string>& argument) {
    return readChoice(reader, argument, {0x0B, 0x0D}, "an object carousel");
}

Job prepareCarousel(ArgumentReader& reader) {
    const CarouselRequest request = {readCarouselChoice(reader, reader.optionalArgument()), "",
                                     reader.arguments().value("out"), reader.seconds().value_or(kLongestForCarousel)};
    return [request](Session& session) { return readCarousel(session, request); };
}

Job prepareGet(ArgumentReader& reader) {
    const bool hasService = reader.hasArgument(1);
    const CarouselRequest request = {readCarouselChoice(reader, hasService ? reader.optionalArgument() : std::nullopt),
                                     reader.argument(hasService ? 1 : 0), reader.arguments().value("out"),
                                     reader.seconds().value_or(kLongestForFile)};
    return [request](Session& session) { return getFile(session, request); };
}

}  // namespace

VerbGroup carouselVerbs() {
    return {
        "Object carousels",
        {
            {{"carousel",
              {{"[SID[:TAG]]"}},
              "show an object carousel, or write its files",
              "Prints the modules with versions and sizes as they arrive, then how long a cycle takes, and what the "
              "directories name. Without a service_id, of the presented service. Ends when everything has arrived and "
              "a block has come again, or after --seconds (20). "
              "With --out it writes the files into a new folder; of several carousels each into one of its own, "
              "FILE-NUMBER. Names that are not safe there become others, as the output says.",
              "carousel 28107 --out files"},
             prepareCarousel},
            {{"carousel get",
              {{"[SID[:TAG]]"}, {"PATH"}},
              "get a file of an object carousel",
              "Writes the file with this path to the output, or to --out, as soon as it has arrived. One word is the "
              "path in a carousel of the presented service. Ends at once if its directory does not name it, or after "
              "--seconds (60).",
              "carousel get 28107 index.html"},
             prepareGet},
        },
    };
}

}  // namespace dvbshell
