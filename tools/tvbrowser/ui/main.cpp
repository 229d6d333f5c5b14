// tvbrowser: a television's browser, without a display.
#include <glib-unix.h>

#include <cstdio>
#include <filesystem>
#include <random>
#include <sstream>
#include <stdexcept>

#include "command_line.h"
#include "command_line/arguments.h"
#include "command_line/output.h"
#include "command_line/standard_descriptors.h"
#include "control.h"
#include "engine_processes.h"
#include "own_folder.h"
#include "screenshot.h"
#include "text/printable.h"
#include "web_server.h"

namespace {

using namespace tvbrowser;
using command_line::Arguments;

constexpr unsigned int kMostPixels = 8192;
constexpr unsigned int kMostPorts = 65535;

/// Takes each line that is printed, too.
std::function<void(const std::string&)> onLine;

void say(const std::string& line) {
    command_line::say(text::printable(line));
    if (onLine) {
        onLine(line);
    }
}

/// A path beside the program's folder.
std::string beside(const std::string& path) {
    return (std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() / path).string();
}

[[noreturn]] void endWithUsage(const std::string& error) {
    command_line::endWithUsageError(commandLine(), error);
}

std::vector<std::uint16_t> caSystemsOf(const Arguments& arguments) {
    std::vector<std::uint16_t> systems;
    std::istringstream list(arguments.value("ca-systems").value_or(""));
    for (std::string number; std::getline(list, number, ',');) {
        systems.push_back(static_cast<std::uint16_t>(
            command_line::numberOrEnd(commandLine(), "--ca-systems", number, 0, UINT16_MAX)));
    }
    return systems;
}

SetDescription setOf(const Arguments& arguments) {
    SetDescription set;
    const std::string size = arguments.value("size").value_or("1280x720");
    char rest = 0;
    if (std::sscanf(size.c_str(), "%ux%u%c", &set.width, &set.height, &rest) != 2 || set.width == 0 ||
        set.height == 0 || set.width > kMostPixels || set.height > kMostPixels) {
        endWithUsage("--size: \"" + size + "\" is not WIDTHxHEIGHT, each from 1 to 8192");
    }
    set.softwareVersion = DTV_VERSION;
    set.caSystems = caSystemsOf(arguments);
    set.picture = arguments.value("picture").value_or("");
    return set;
}

std::optional<std::uint16_t> portOf(const Arguments& arguments) {
    const std::optional<std::string> port = arguments.value("http");
    return port ? std::optional(static_cast<std::uint16_t>(
                      command_line::numberOrEnd(commandLine(), "--http", *port, 0, kMostPorts)))
                : std::nullopt;
}

struct Opened {
    std::string url;
    std::optional<ApplicationId> id;
};

/// URL[,ORG.APP]; a URL may have commas of its own.
Opened openedBy(const std::string& value) {
    const std::size_t comma = value.rfind(',');
    const std::optional<ApplicationId> id =
        comma == std::string::npos ? std::nullopt : parseApplicationId(value.substr(comma + 1));
    return {id ? value.substr(0, comma) : value, id};
}

gboolean onSignal(gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_CONTINUE;
}

/// What pages store, as long as the engine runs.
struct PageData {
    PageData() = default;
    PageData(const PageData&) = delete;
    PageData& operator=(const PageData&) = delete;
    ~PageData() { endEngineProcesses(); }
    const OwnFolder folder;
};

std::string newSecret() {
    constexpr unsigned int kParts = 8;
    std::random_device random;
    std::string secret;
    for (unsigned int part = 0; part < kParts; ++part) {
        secret += std::to_string(random()) + ".";
    }
    return secret;
}

int run(const Arguments& arguments) {
    const SetDescription set = setOf(arguments);
    const std::optional<std::uint16_t> port = portOf(arguments);
    const PageData data;
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    g_unix_signal_add(SIGINT, onSignal, loop);
    g_unix_signal_add(SIGTERM, onSignal, loop);
    const std::function<void()> quit = [loop] { g_main_loop_quit(loop); };
    PageSettings settings;
    settings.libraryPath = arguments.value("library").value_or(beside("lib/libbrowserdvbapi.so"));
    settings.extensionFolder = arguments.value("extension").value_or(beside("lib/tvbrowser"));
    settings.dataFolder = data.folder.path();
    settings.userAgent = userAgent(set);
    settings.deviceSecret = newSecret();
    Television television(set, settings, say);
    if (const auto application = arguments.value("application")) {
        const Opened opened = openedBy(*application);
        television.open(opened.url, opened.id);
    }
    int code = 0;
    std::unique_ptr<FirstPicture> picture;
    const std::optional<std::string> file = arguments.value("screenshot");
    if (file) {
        picture = std::make_unique<FirstPicture>(television, [&](bool hasDrawn) {
            code = hasDrawn && writeScreenshot(television, *file) ? 0 : 1;
            say(code == 0  ? "screenshot: " + *file
                : hasDrawn ? "error: cannot write " + *file
                           : "error: no application has drawn itself");
            quit();
        });
    }
    const Control control(television, say, quit);
    std::unique_ptr<WebServer> server;
    if (port) {
        server = std::make_unique<WebServer>(television, beside("share/dtv/tvbrowser"), *port);
        onLine = [&server](const std::string& line) { server->log(line); };
        say("page for people: " + server->url());
    }
    say("tvbrowser: running");
    g_main_loop_run(loop);
    onLine = {};
    return code;
}

}  // namespace

int main(int argc, char** argv) {
    command_line::keepStandardDescriptors();
    const Arguments arguments = command_line::parseOrEnd(commandLine(), argc, argv);
    try {
        return run(arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tvbrowser: %s\n", text::printable(error.what()).c_str());
        return 1;
    }
}
