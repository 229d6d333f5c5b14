// Sends records and registers their decoders.
#pragma once

#include "frame/endian_table.h"
#include "frame/message.h"

struct frameLmqIOService;
using frameLmqMessageHandler = int (*)(const frame::MsgMeta&, const frame::TransportInfo&, const void* record,
                                       void* context);

extern "C" {
int frameLmqIOServiceSendStructure(frameLmqIOService* service, frame::MsgIds& ids, const frame::MsgMeta& header,
                                   int zero, const ovxEndianTable* table, const void* record);
int frameLmqIOServiceRegisterMessageHandlerFunction(frameLmqIOService* service, const frame::MsgMeta& header,
                                                    frameLmqMessageHandler handler, void* context,
                                                    const ovxEndianTable* table);
}
