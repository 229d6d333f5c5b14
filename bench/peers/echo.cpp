// The other side of the measurements without the library: answers each question on the socket that is its standard
// input.
//   echo raw|asio|sd-bus CPU BYTES   runs on that CPU; an answer has a text of BYTES
// A raw packet asks for as many answers as its first byte says.
#include <sys/socket.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <boost/asio.hpp>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "cpus.h"
#include "plain_packets.h"

namespace {

using bench::kLargest;
using bench::kShort;

int answerRaw(std::size_t bytes) {
    std::vector<char> question(kLargest);
    const std::vector<char> answer(kShort + bytes);
    while (recv(STDIN_FILENO, question.data(), question.size(), 0) > 0) {
        for (auto left = static_cast<unsigned char>(question.front()); left > 0; --left) {
            send(STDIN_FILENO, answer.data(), answer.size(), MSG_NOSIGNAL);
        }
    }
    return 0;
}

class AsioAnswers {
public:
    explicit AsioAnswers(std::size_t bytes)
        : socket(context, bench::kPlainProtocol, STDIN_FILENO), answer(kShort + bytes) {}
    int run() {
        receive();
        context.run();
        return 0;
    }

private:
    void receive() {
        socket.async_receive(boost::asio::buffer(question), flags,
                             [this](const boost::system::error_code& error, std::size_t) {
                                 if (!error) {
                                     send();
                                 }
                             });
    }
    void send() {
        socket.async_send(boost::asio::buffer(answer), 0, [this](const boost::system::error_code& error, std::size_t) {
            if (!error) {
                receive();
            }
        });
    }

    boost::asio::io_context context{1};
    boost::asio::generic::seq_packet_protocol::socket socket;
    int flags = 0;
    std::vector<char> question = std::vector<char>(kLargest);
    const std::vector<char> answer;
};

int answerByBus(std::size_t bytes) {
    std::string text(bytes, 'x');
    const auto answer = [](sd_bus_message* question, void* context, sd_bus_error*) {
        return sd_bus_reply_method_return(question, "tts", std::uint64_t{1}, std::uint64_t{2},
                                          static_cast<std::string*>(context)->c_str());
    };
    const sd_bus_vtable operations[] = {SD_BUS_VTABLE_START(0),
                                        SD_BUS_METHOD("Ask", "u", "tts", answer, SD_BUS_VTABLE_UNPRIVILEGED),
                                        SD_BUS_VTABLE_END};
    sd_bus* bus = nullptr;
    sd_id128_t id{};
    sd_id128_randomize(&id);
    if (sd_bus_new(&bus) < 0 || sd_bus_set_fd(bus, STDIN_FILENO, STDIN_FILENO) < 0 ||
        sd_bus_set_server(bus, 1, id) < 0 || sd_bus_set_anonymous(bus, 1) < 0 || sd_bus_start(bus) < 0 ||
        sd_bus_add_object_vtable(bus, nullptr, bench::kBusObject, bench::kBusInterface, operations, &text) < 0) {
        return 1;
    }
    while (true) {
        const int more = sd_bus_process(bus, nullptr);
        if (more < 0 || (more == 0 && sd_bus_wait(bus, UINT64_MAX) < 0)) {
            return 0;
        }
    }
}

}  // namespace

int main(int, char** arguments) {
    try {
        const std::string kind = arguments[1];
        bench::pinTo(std::atoi(arguments[2]));
        const std::size_t bytes = std::strtoul(arguments[3], nullptr, 10);
        return kind == "raw" ? answerRaw(bytes) : kind == "asio" ? AsioAnswers(bytes).run() : answerByBus(bytes);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "echo: %s\n", error.what());
        return 1;
    }
}
