// The message transport of one process member: sends records to the other side, and registers the handlers of received
// messages. The platform creates the handle and gives it to the member with setLmqIOModule().
//
// Wire image of a record, the same for machines of both widths: the fields in network byte order at their 32-bit
// offsets, each carrier as (length, 0), followed by the carriers' bytes in field order.
#pragma once

#include "frame/api.h"
#include "frame/endian_table.h"
#include "frame/message.h"

struct frameLmqIOService;

/// Handles one received message. Called on a transport thread, one message at a time, those of a peer in the order of
/// their sends.
/// `record` is in host byte order and layout. The record and its carriers' bytes are valid during the call only.
/// Strings have a zero terminator after their last byte. The result is ignored.
using frameLmqMessageHandler = int (*)(const frame::MsgMeta& header, const frame::TransportInfo& transport,
                                       const void* record, void* context);

extern "C" {

/// Sends one record. Any thread; never waits for the other side or for an answer. The caller may free the record and
/// its carriers as soon as the call returns.
/// `ids.peer` chooses the receiver; kAnyId means every connected peer. `reserved` is always 0.
/// Returns 0 when the record was handed to the transport; for kAnyId on the service side also when no peer is
/// connected. Negative when it was not sent: the other side is not connected or does not accept messages, or the record
/// does not fit its table.
DTV_PLATFORM_API int frameLmqIOServiceSendStructure(frameLmqIOService* service, frame::MsgIds& ids,
                                                    const frame::MsgMeta& header, int reserved,
                                                    const ovxEndianTable* table, const void* record);

/// Registers the handler of messages with this header. Call it only from registerMessageHandlers(). A later
/// registration of the same header replaces the earlier one. `table` must outlive the service.
/// 0 on success, negative when the service handle, the handler or the table is null.
DTV_PLATFORM_API int frameLmqIOServiceRegisterMessageHandlerFunction(frameLmqIOService* service,
                                                                     const frame::MsgMeta& header,
                                                                     frameLmqMessageHandler handler, void* context,
                                                                     const ovxEndianTable* table);
}
