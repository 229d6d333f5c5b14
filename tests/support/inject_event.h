// Brings an event to the library as the transport would: from its fields, through the wire image, on the injection
// thread.
#pragma once

#include <gtest/gtest.h>

#include "message_transfer.h"
#include "recording/recording_platform.h"

/// Waits until the event has been handled; fails the test when nobody is registered for it.
template <typename Event, typename... Arguments>
void injectEvent(const Arguments&... arguments) {
    const lo::browserdvbservice::OutgoingRecord<Event> outgoing(arguments...);
    ASSERT_TRUE(recording::inject(Event::header(), platform_common::encodeRecord(*Event::table(), outgoing.bytes())))
        << Event::kName;
}
