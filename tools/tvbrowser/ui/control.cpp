// The commands of the standard input.
#include "control.h"

#include <fcntl.h>
#include <glib-unix.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <map>

namespace tvbrowser {

Control::Control(Television& newTelevision, Television::Say newSay, std::function<void()> newQuit)
    : television(newTelevision), say(std::move(newSay)), quit(std::move(newQuit)) {
    source = g_unix_fd_add(STDIN_FILENO, GIOCondition(G_IO_IN | G_IO_HUP), onInput, this);
}

Control::~Control() {
    if (source != 0) {
        g_source_remove(source);
    }
}

gboolean Control::onInput(gint descriptor, GIOCondition, gpointer control) {
    auto& self = *static_cast<Control*>(control);
    std::array<char, 4096> bytes{};
    const ssize_t count = read(descriptor, bytes.data(), bytes.size());
    if (count <= 0) {
        self.source = 0;  // without a hand at the keyboard the television runs on
        return G_SOURCE_REMOVE;
    }
    self.take(bytes.data(), static_cast<std::size_t>(count));
    return G_SOURCE_CONTINUE;
}

void Control::take(const char* bytes, std::size_t count) {
    partial.append(bytes, count);
    for (std::size_t end = partial.find('\n'); end != std::string::npos; end = partial.find('\n')) {
        const std::string line = partial.substr(0, end);
        partial.erase(0, end + 1);
        run(line);
    }
}

void Control::run(const std::string& line) {
    const std::size_t blank = line.find(' ');
    const std::string verb = line.substr(0, blank);
    const std::string argument = blank == std::string::npos ? "" : line.substr(blank + 1);
    const std::map<std::string, std::function<void()>> commands{
        {"key",
         [&] {
             if (!television.press(argument)) {
                 say("error: the remote control has no key \"" + argument + "\"");
             }
         }},
        {"screenshot", [&] { screenshot(argument); }},
        {"start", [&] { start(argument); }},
        {"open", [&] { television.open(argument, std::nullopt); }},
        {"picture", [&] { television.setPicture(argument); }},
        {"applications",
         [&] {
             for (const std::string& application : television.applications()) {
                 say("applications: " + application);
             }
         }},
        {"quit", quit},
    };
    const auto command = commands.find(verb);
    if (command != commands.end()) {
        command->second();
    } else if (!verb.empty()) {
        say("error: unknown command \"" + verb +
            "\"; there are key, screenshot, start, open, picture, applications, quit");
    }
}

void Control::screenshot(const std::string& file) {
    say(writeScreenshot(television, file) ? "screenshot: " + file : "error: cannot write " + file);
}

void Control::start(const std::string& id) {
    const std::optional<ApplicationId> application = parseApplicationId(id);
    if (!application) {
        say("error: \"" + id + "\" is no ORG.APP, two hexadecimal numbers");
    } else {
        television.start(*application);
    }
}

bool writeScreenshot(const Television& television, const std::string& file) {
    std::ofstream output(file, std::ios::binary);
    output << pngOf(television.screen().frame()) << std::flush;
    return output.good();
}

}  // namespace tvbrowser
