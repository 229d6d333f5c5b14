// A browser that is connected, and asks nothing. It says so by a byte to its standard input, a socket.
#include <unistd.h>

#include "browser.h"

int main() {
    bench::waitForService();
    if (write(STDIN_FILENO, "1", 1) != 1) {
        return 1;
    }
    while (true) {
        pause();
    }
}
