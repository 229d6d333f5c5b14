// Members of a process: the process model creates, sets up, starts, stops and destroys them. A member derives from
// AbstractMarshallingImpl and overrides the perform… steps that it needs.
//
// The platform exports these classes. The order of their virtual operations is binary interface: member lifecycle,
// component, application, marshalling.
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
/// setupDone, start, stop, detachProcess, on the thread that starts or stops the members. Each calls its perform… step
/// and returns its result. A negative result ends the sequence, and the starting call returns it.
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

    /// Publishes `pointer` under `name` in this process. Any thread. 0, or negative for a null pointer, an empty name,
    /// or a name that is in use.
    int registerInterface(void* pointer, const std::string& name);
    /// Withdraws every name under which `pointer` is published. Any thread. 0, or negative when there is none.
    int unregisterInterface(void* pointer);
};

/// An event of a member's own queue. The member defines the number and the argument.
struct Event {
    std::uint32_t id = 0;
    void* argument = nullptr;
};

using EventHandler = int (*)(const Event& event, void* context);

/// A member with an identity, its own mutex and a table of event handlers.
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
    /// Registers the handler of an event number; negative for a null handler or a number that is in use.
    virtual int registerEventHandler(std::uint32_t id, EventHandler handler, void* context);
    /// Removes the handler of an event number; negative when there is none.
    virtual int unregisterEventHandler(std::uint32_t id);

protected:
    /// The component mutex: not recursive, default attributes. The derived class decides what it guards.
    pthread_mutex_t& componentMutex() { return mutex; }

private:
    struct Registration {
        EventHandler handler;
        void* context;
    };

    pthread_mutex_t mutex;          // used by the derived class; the platform never takes it
    pthread_mutex_t handlersMutex;  // released before a handler is called
    std::map<std::uint32_t, Registration> handlers DTV_GUARDED_BY(handlersMutex);
    std::uint32_t componentNumber;
};

/// A component with an event queue. scheduleEvents() delivers its events.
class DTV_PLATFORM_API AbstractApplication : public AbstractComponent {
public:
    AbstractApplication();
    ~AbstractApplication() override;

    int deliverEvent(const Event& event) override;
    /// Like deliverEvent(), for events that the application sends to itself.
    virtual int deliverInternalEvent(const Event& event);
    /// Appends an event to the queue. Any thread; 0.
    virtual int postEvent(const Event& event);
    /// Puts an event ahead of every event that was posted with postEvent(). Any thread; 0.
    virtual int postInternalEvent(const Event& event);
    /// Delivers the queued events on the caller's thread. Returns the number of events delivered.
    virtual int scheduleEvents();

private:
    pthread_mutex_t queueMutex;  // released before an event is delivered
    std::deque<Event> events DTV_GUARDED_BY(queueMutex);
    std::deque<Event> internalEvents DTV_GUARDED_BY(queueMutex);
};

/// Which end of the transport a marshalling member is.
enum CouplingMode : int {
    CouplingModeClient = 0,   ///< connects to the service of its name, sends commands, receives events
    CouplingModeService = 1,  ///< waits for clients under its name, receives commands, sends events
};

/// A member that exchanges messages with members of other processes through its I/O service handle. The base
/// performStarting() makes the connection and the base performStopping() ends it; a lost connection is restored
/// automatically.
class DTV_PLATFORM_API AbstractMarshallingImpl : public AbstractApplication {
public:
    explicit AbstractMarshallingImpl(int couplingMode);
    ~AbstractMarshallingImpl() override;

    int performSetupDone() override;
    int performStarting() override;
    int performStopping() override;

    /// The process model calls this between attachProcess() and setupDone(). Keeps the handle and returns the result of
    /// registerMessageHandlers().
    virtual int setLmqIOModule(frameLmqIOService* service);
    /// Overridden by the member: calls frameLmqIOServiceRegisterMessageHandlerFunction() once for each message that it
    /// receives.
    virtual int registerMessageHandlers();

    /// Called once for each change of the connection's state, on a transport thread and not during a handler; `peer`
    /// identifies the connection. The bases do nothing. ConnectionFailed is called once for a series of failed
    /// attempts, not for each attempt.
    virtual void onIOConnectionConnected(const TransportInfo& peer);
    virtual void onIOConnectionConnectionFailed(const TransportInfo& peer);
    virtual void onIOConnectionDisconnected(const TransportInfo& peer);

    /// Sets the name under which client and service meet. Call it in the member's constructor.
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
