// Members of a process: what the process model creates, sets up, starts, stops and destroys. A member derives from
// AbstractMarshallingImpl and overrides the perform… steps it has work for.
//
// The classes are exported by the platform; the order of their virtual operations is binary interface:
// member lifecycle, component, application, marshalling.
#pragma once

#include <pthread.h>

#include <cstdint>
#include <deque>
#include <map>
#include <string>

#include "frame/api.h"
#include "frame/lmq_io_service.h"
#include "frame/message.h"

namespace frame {

class Process;

/// Lifecycle of a member. The process model calls the entry points in the order attachProcess, (I/O service),
/// setupDone, start, stop, detachProcess, on the thread that starts or stops the members; each calls its perform… step
/// and hands its result on. A negative result ends the sequence and is returned to whoever started the members.
class DTV_PLATFORM_API AbstractProcessMember {
public:
    AbstractProcessMember() = default;
    AbstractProcessMember(const AbstractProcessMember&) = delete;
    AbstractProcessMember& operator=(const AbstractProcessMember&) = delete;
    virtual ~AbstractProcessMember();

    virtual int attachProcess(Process& process);
    virtual int detachProcess();
    virtual int setupDone();
    virtual int start();
    virtual int stop();

    virtual int performSetupDone();
    virtual int performStarting();
    virtual int performStopping();

    /// Publishes `pointer` under `name` in this process. Any thread. 0, or negative: null pointer, empty name, or a
    /// name that is taken.
    int registerInterface(void* pointer, const std::string& name);
    /// Withdraws every name under which `pointer` is published. Any thread. 0, or negative when there is none.
    int unregisterInterface(void* pointer);
};

/// An event of a member's own queue; the number and the argument are the member's.
struct Event {
    std::uint32_t id = 0;
    void* argument = nullptr;
};

using EventHandler = int (*)(const Event& event, void* context);

/// A member with an identity, a mutex of its own and a table of event handlers.
class DTV_PLATFORM_API AbstractComponent : public AbstractProcessMember {
public:
    AbstractComponent();
    ~AbstractComponent() override;

    /// Number of this component in the process, from 1 in order of construction.
    virtual std::uint32_t getServiceId() const;
    /// Hands an event to handleEvent() at once, on the caller's thread.
    virtual int deliverEvent(const Event& event);
    /// Calls the handler registered for the event; negative when there is none.
    virtual int handleEvent(const Event& event);
    /// Names the handler of an event number; negative for a null handler or a number that is taken.
    virtual int registerEventHandler(std::uint32_t id, EventHandler handler, void* context);
    /// Forgets the handler of an event number; negative when there is none.
    virtual int unregisterEventHandler(std::uint32_t id);

protected:
    /// The component mutex: not recursive, default attributes. Guards what the derived class says it guards.
    pthread_mutex_t& componentMutex() { return mutex; }

private:
    struct Registration {
        EventHandler handler;
        void* context;
    };

    pthread_mutex_t mutex;          // the derived class's; never taken by the platform
    pthread_mutex_t handlersMutex;  // guards handlers; released before a handler is called
    std::map<std::uint32_t, Registration> handlers;
    std::uint32_t componentNumber;
};

/// A component with an event queue, drained by whoever calls scheduleEvents().
class DTV_PLATFORM_API AbstractApplication : public AbstractComponent {
public:
    AbstractApplication();
    ~AbstractApplication() override;

    int deliverEvent(const Event& event) override;
    /// As deliverEvent(), for events that the application sends to itself.
    virtual int deliverInternalEvent(const Event& event);
    /// Appends an event to the queue. Any thread; 0.
    virtual int postEvent(const Event& event);
    /// Puts an event ahead of every event that was posted with postEvent(). Any thread; 0.
    virtual int postInternalEvent(const Event& event);
    /// Delivers what is queued, on the caller's thread; the number of events delivered.
    virtual int scheduleEvents();

private:
    pthread_mutex_t queueMutex;  // guards both queues; released before an event is delivered
    std::deque<Event> events;
    std::deque<Event> internalEvents;
};

/// Which end of the transport a marshalling member is.
enum CouplingMode : int {
    CouplingModeClient = 0,   ///< connects to the service of its name, sends commands, receives events
    CouplingModeService = 1,  ///< waits for clients under its name, receives commands, sends events
};

/// A member that exchanges messages with members of other processes. It holds the I/O service handle; the connection is
/// made by the base performStarting() and ended by the base performStopping(), and comes back by itself in between.
class DTV_PLATFORM_API AbstractMarshallingImpl : public AbstractApplication {
public:
    explicit AbstractMarshallingImpl(int couplingMode);
    ~AbstractMarshallingImpl() override;

    int performSetupDone() override;
    int performStarting() override;
    int performStopping() override;

    /// Given by the process model between attachProcess() and setupDone(): keeps the handle and calls
    /// registerMessageHandlers(), whose result it returns.
    virtual int setLmqIOModule(frameLmqIOService* service);
    /// Overridden by the member: one frameLmqIOServiceRegisterMessageHandlerFunction() per message that it receives.
    virtual int registerMessageHandlers();

    /// Told of the connection's state, once a change, on the transport thread; `peer` names the connection. The bases
    /// do nothing. ConnectionFailed is told once for each row of failed attempts, not once an attempt.
    virtual void onIOConnectionConnected(const TransportInfo& peer);
    virtual void onIOConnectionConnectionFailed(const TransportInfo& peer);
    virtual void onIOConnectionDisconnected(const TransportInfo& peer);

    /// The name under which client and service meet; to be set by the constructor of the member.
    void setServiceName(const std::string& name);
    const std::string& serviceName() const { return serviceName_; }
    int couplingMode() const { return couplingMode_; }

protected:
    frameLmqIOService* lmqIOService() const { return ioService; }

private:
    int couplingMode_;
    std::string serviceName_;
    frameLmqIOService* ioService = nullptr;  // set once before start, owned by the platform
};

}  // namespace frame
