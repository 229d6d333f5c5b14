// The transport that each platform implements for its marshalling members. The common parts call these functions; the
// host and the recording platform each define them.
#pragma once

#include "frame/process_member.h"

namespace platform_common {

/// Creates the I/O service of a member whose name and coupling mode are known. Null when it cannot be created.
frameLmqIOService* createIOService(frame::AbstractMarshallingImpl& owner);

/// Prepares the start. 0, or negative when the transport lacks a resource.
int setUpIOService(frameLmqIOService* service);

/// Starts to exchange messages. The first attempt to connect has been made on return, whether it succeeded or not.
/// 0, or negative when the transport itself cannot run.
int startIOService(frameLmqIOService* service);

/// Stops the exchange: after the return no handler runs and none will. Does nothing for a service that was not started
/// or is null.
/// 0, or negative when the transport could not be stopped cleanly.
int stopIOService(frameLmqIOService* service);

void destroyIOService(frameLmqIOService* service);

}  // namespace platform_common
