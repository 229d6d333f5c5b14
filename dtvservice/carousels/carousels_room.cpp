// Answers the commands for object carousels.
#include "carousels_room.h"

namespace dtvservice {

CarouselsRoom::CarouselsRoom(Core& newCore) : core(newCore) {
    core.commands.on.cmdMountDsmcc = calls(*this, &CarouselsRoom::cmdMountDsmcc);
}

void CarouselsRoom::cmdMountDsmcc(Browser asker, unsigned int request, unsigned short onid, unsigned short tsid,
                                  unsigned short sid, short componentTag) {
    constexpr unsigned short kFailed = 1;
    core.browsers.tell({asker}, &Events::onDsmccMounted, request, onid, tsid, sid, componentTag, kFailed,
                       std::string());
}

}  // namespace dtvservice
