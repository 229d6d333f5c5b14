// What a platform brings along beside the common parts: a transport for marshalling members. The common parts call
// these; the host and the recording platform each define them.
#pragma once

#include "frame/process_member.h"

namespace platform_common {

/// Makes the I/O service of a member whose name and coupling mode are known. Null when it cannot be made.
frameLmqIOService* createIOService(frame::AbstractMarshallingImpl& owner);

/// Makes ready for starting. 0, or negative when the transport lacks what it needs.
int setUpIOService(frameLmqIOService* service);

/// Begins to exchange messages; the first attempt to connect has been made when it returns, whatever came of it.
/// 0, or negative when the transport itself cannot run.
int startIOService(frameLmqIOService* service);

/// Ends the exchange: when it returns, no handler runs and none will. Harmless when not started, and when null.
/// 0, or negative when the transport could not be ended in good order.
int stopIOService(frameLmqIOService* service);

void destroyIOService(frameLmqIOService* service);

}  // namespace platform_common
