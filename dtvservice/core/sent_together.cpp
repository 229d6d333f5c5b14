// Holds messages by the platform.
#include "sent_together.h"

#include "dtv_optional/held_messages.h"

namespace dtvservice {

SentTogether::SentTogether() : isHolding(dtv_optional::holdMessages != nullptr && dtv_optional::holdMessages()) {}

SentTogether::~SentTogether() {
    if (isHolding) {
        dtv_optional::sendHeldMessages();
    }
}

}  // namespace dtvservice
