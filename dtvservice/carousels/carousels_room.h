// CarouselsRoom: object carousels. This service mounts none and refuses every request.
// Threads: the loop's.
// Blocks:  never.
// Fails:   never.
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
