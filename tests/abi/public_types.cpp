// One function for every type that browsers or platforms share with the library, so that the ABI description of these
// functions covers all of the types. Never executed.
#include "app-browserdvbservice-proxy-main.h"
#include "browser_AIT_catcher.h"
#include "browserdvbservice_records.h"
#include "dvb_ait_section_interface.h"
#include "dvb_api_interface.h"
#include "dvb_section_interface.h"
#include "dvb_service_listener.h"
#include "frame/lmq_io_service.h"
#include "ovx/guard.h"
#include "velmora/msgqueue/ipc_message_queue.h"

#define DESCRIBE(name, Type)                                            \
    extern "C" __attribute__((visibility("default"))) void name(Type*); \
    extern "C" void name(Type* described) {                             \
        static_cast<void>(described);                                   \
    }

DESCRIBE(browser_DvbAPIInterface, velmora::dtv::DvbAPIInterface)
DESCRIBE(browser_DVBServiceListener, velmora::dtv::DVBServiceListener)
DESCRIBE(browser_DVBSectionInterface, velmora::dtv::DVBSectionInterface)
DESCRIBE(browser_SectionFilterClient, velmora::dtv::SectionFilterClient)
DESCRIBE(browser_DVBAITSectionInterface, velmora::dtv::DVBAITSectionInterface)
DESCRIBE(browser_AITSectionClient, velmora::dtv::AITSectionClient)
DESCRIBE(browser_BrowserAITCatcher, velmora::dvbservice::BrowserAITCatcher)

DESCRIBE(rpc_Proxy, lo::browserdvbservice::Proxy)
DESCRIBE(rpc_ClientInterface, lo::browserdvbservice::ClientInterface)
#define NESTED(Record, fields)                            \
    DESCRIBE(rpc_##Record, lo::browserdvbservice::Record) \
    DESCRIBE(rpc_##Record##_struct, lo::browserdvbservice::_##Record##_struct)
#define COMMAND(identifier, operation, Message, fields) \
    DESCRIBE(rpc_##Message, lo::browserdvbservice::browserdvbserviceMsg##Message##_t)
#define EVENT(identifier, operation, Message, decoder, fields) COMMAND(identifier, operation, Message, fields)
#include "browserdvbservice_messages.inc"

DESCRIBE(platform_Process, frame::Process)
DESCRIBE(platform_Interface, frame::Interface)
DESCRIBE(platform_AbstractMarshallingImpl, frame::AbstractMarshallingImpl)
DESCRIBE(platform_Event, frame::Event)
DESCRIBE(platform_MsgMeta, frame::MsgMeta)
DESCRIBE(platform_MsgIds, frame::MsgIds)
DESCRIBE(platform_TransportInfo, frame::TransportInfo)
DESCRIBE(platform_ovxEndianTable, ovxEndianTable)
DESCRIBE(platform_ltGuard, ltGuard)
DESCRIBE(platform_SectionDataIPCMessage, velmora::msgqueue::SectionDataIPCMessage)
DESCRIBE(platform_IPCMessageQueue, velmora::msgqueue::IPCMessageQueue)
