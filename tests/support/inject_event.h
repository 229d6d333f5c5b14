// Passes an event to the library as the transport would: encodes the fields into the wire image and decodes it on the
// injection thread.
#pragma once

#include <gtest/gtest.h>

#include "message_transfer.h"
#include "recording/recording_platform.h"

/// Waits until the event has been handled. Fails the test when no handler is registered.
template <typename Event, typename... Arguments>
void injectEvent(const Arguments&... arguments) {
    const lo::browserdvbservice::OutgoingRecord<Event> outgoing(arguments...);
    ASSERT_TRUE(recording::inject(Event::header(), platform_common::encodeRecord(*Event::table(), outgoing.bytes())))
        << Event::kName;
}
