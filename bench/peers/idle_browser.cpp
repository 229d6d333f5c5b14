// A browser that is connected, and asks nothing. It says so by a byte to its standard input, a socket.
#include <unistd.h>

#include <chrono>
#include <thread>

#include "browser.h"

int main() {
    while (bench::dvbApi().startOSDDetection(0) != 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    if (write(STDIN_FILENO, "1", 1) != 1) {
        return 1;
    }
    while (true) {
        pause();
    }
}
