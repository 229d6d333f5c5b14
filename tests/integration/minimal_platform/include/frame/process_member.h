// The base classes of the library's proxy.
#pragma once

#include <pthread.h>

#include <string>

#include "frame/lmq_io_service.h"

namespace frame {

class Process;
struct Event {};
using EventHandler = int (*)(const Event&, void*);

class AbstractProcessMember {
public:
    virtual ~AbstractProcessMember() = default;
    virtual int attachProcess(Process& process);
    virtual int detachProcess();
    virtual int setupDone();
    virtual int start();
    virtual int stop();
    virtual int performSetupDone();
    virtual int performStarting();
    virtual int performStopping();
    int registerInterface(void* pointer, const std::string& name);
    int unregisterInterface(void* pointer);
};

class AbstractComponent : public AbstractProcessMember {
public:
    virtual std::uint32_t getServiceId() const;
    virtual int deliverEvent(const Event& event);
    virtual int handleEvent(const Event& event);
    virtual int registerEventHandler(std::uint32_t id, EventHandler handler, void* context);
    virtual int unregisterEventHandler(std::uint32_t id);

protected:
    pthread_mutex_t& componentMutex() { return mutex; }

private:
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
};

class AbstractApplication : public AbstractComponent {
public:
    virtual int deliverInternalEvent(const Event& event);
    virtual int postEvent(const Event& event);
    virtual int postInternalEvent(const Event& event);
    virtual int scheduleEvents();
};

enum CouplingMode : int { CouplingModeClient = 0 };

class AbstractMarshallingImpl : public AbstractApplication {
public:
    explicit AbstractMarshallingImpl(int mode);
    virtual int setLmqIOModule(frameLmqIOService* service);
    virtual int registerMessageHandlers();
    virtual void onIOConnectionConnected(const TransportInfo& peer);
    virtual void onIOConnectionConnectionFailed(const TransportInfo& peer);
    virtual void onIOConnectionDisconnected(const TransportInfo& peer);
    void setServiceName(const std::string& name);

protected:
    frameLmqIOService* lmqIOService() const { return service; }

private:
    frameLmqIOService* service = nullptr;
};

}  // namespace frame
