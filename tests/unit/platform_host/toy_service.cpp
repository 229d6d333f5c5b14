// A service of the test interface in a separate process, for tests that kill it.
//   toy_service NAME
#include <unistd.h>

#include "members.h"

int main(int argc, char** argv) {
    toy::Member service(frame::CouplingModeService, argc > 1 ? argv[1] : "toy");
    if (service.start() != 0) {
        return 1;
    }
    while (true) {
        pause();
    }
}
