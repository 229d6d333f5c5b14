// InputName: one --input of the command line:
//
//  - file:PATH or PATH;
//  - "-" for standard input;
//  - udp://[@]HOST:PORT or rtp://[@]HOST:PORT, with ?interface=ADDRESS for the network interface of a multicast group;
//  - dvb://ADAPTER[/FRONTEND], with ?NAME=VALUE&NAME=VALUE for the tuning parameters.
//
// Threads: any.
// Blocks:  never.
// Fails:   no value, and a text that says what is wrong.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace dtvservice {

struct InputName {
    enum class Kind { file, standardInput, udp, rtp, dvb };
    struct Option {
        std::string name;
        std::string value;
    };
    Kind kind = Kind::file;
    std::string text;  ///< as given on the command line
    std::string path;  ///< of a file
    std::string host;  ///< numeric address to listen on, a multicast group, or empty for all addresses of the machine
    std::uint16_t port = 0;
    std::string interface;  ///< numeric address of an interface, or empty for the system's choice
    unsigned int adapter = 0;
    unsigned int frontend = 0;
    std::vector<Option> options;  ///< tuning parameters of an adapter

    bool isFile() const { return kind == Kind::file; }
};

std::optional<InputName> parseInput(const std::string& text, std::string& error);

}  // namespace dtvservice
