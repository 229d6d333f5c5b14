// The message transport of one process member: sending a record to the other side, and saying who handles which
// message. A handle is made by the platform and given to the member through setLmqIOModule().
//
// Wire image of a record, the same on machines of either width: the fields at the offsets that they have on a 32-bit
// machine, in network byte order, a carrier as (length, 0); behind it the bytes of the carriers in field order.
#pragma once

#include "frame/api.h"
#include "frame/endian_table.h"
#include "frame/message.h"

struct frameLmqIOService;

/// Handles one received message. Runs on the transport thread, one message at a time, in the order of arrival.
/// `record` is in host byte order and layout; it and everything that its carriers point to are valid during the call
/// only. Strings are zero-terminated behind their last byte. The result is not looked at.
using frameLmqMessageHandler = int (*)(const frame::MsgMeta& header, const frame::TransportInfo& transport,
                                       const void* record, void* context);

extern "C" {

/// Sends one record. Any thread; never waits for the other side, nor for an answer. The record and its carriers may be
/// freed as soon as the call has returned.
/// `ids.peer` chooses the receiver: kAnyId for everyone connected. `reserved` is always 0.
/// 0: handed to the transport (for kAnyId on the service side also when nobody is connected); negative: not sent,
/// because the other side is away, does not take messages, or the record does not fit its table.
DTV_PLATFORM_API int frameLmqIOServiceSendStructure(frameLmqIOService* service, frame::MsgIds& ids,
                                                    const frame::MsgMeta& header, int reserved,
                                                    const ovxEndianTable* table, const void* record);

/// Names the handler of messages with this header. To be called from registerMessageHandlers() only. A later
/// registration of the same header replaces the earlier one. `table` must outlive the service.
/// 0 on success, negative when the service handle, the handler or the table is null.
DTV_PLATFORM_API int frameLmqIOServiceRegisterMessageHandlerFunction(frameLmqIOService* service,
                                                                     const frame::MsgMeta& header,
                                                                     frameLmqMessageHandler handler, void* context,
                                                                     const ovxEndianTable* table);
}
