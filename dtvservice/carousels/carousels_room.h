// CarouselsRoom: object carousels. None is mounted, and whoever asks for one is told so.
// Threads: the loop's.   Blocks: never.   Fails: never.
#pragma once

#include "core.h"

namespace dtvservice {

class CarouselsRoom : public Room {
public:
    explicit CarouselsRoom(Core& newCore);

private:
    void cmdMountDsmcc(Browser asker, unsigned int request, unsigned short onid, unsigned short tsid,
                       unsigned short sid, short componentTag);

    Core& core;
};

}  // namespace dtvservice
