// A DVB API that records every call as text, "operation(value, value)", and returns the results that a test sets.
// Threads: one.
// Blocks:  never.
#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "dvb_api_interface.h"

class RecordingApi : public velmora::dtv::DvbAPIInterface {
public:
    std::vector<std::string> calls;
    int result = 0;
    bool known = true;  ///< the current channel
    std::string ccid = "ccid:1:2:3";
    std::string dsd;
    std::vector<std::shared_ptr<velmora::dtv::DVBServiceListener>> listeners;
    /// Called with the service_id of every tune.
    std::function<void(int sid)> tuned = [](int) {};
    std::function<void()> notified = [] {};

    void AddRef() override { keep("AddRef"); }
    void Release() override { keep("Release"); }
    std::string name() override { return "DvbAPIInterface"; }
    int getCurrentChannelInfo(int& onid, int& tsid, int& sid) override {
        if (result == 0 && !known) {
            keep("getCurrentChannelInfo");
            return -1;
        }
        if (result == 0) {
            onid = 1;
            tsid = 2;
            sid = 3;
        }
        return answer("getCurrentChannelInfo");
    }
    std::string getCurrentCCID() override {
        keep("getCurrentCCID");
        return ccid;
    }
    std::string getCurrentDsd() override {
        keep("getCurrentDsd");
        return dsd;
    }
    int sendApplicationStartedFailed() override { return answer("sendApplicationStartedFailed"); }
    int sendApplicationStartedSucceeded() override { return answer("sendApplicationStartedSucceeded"); }
    void triggerAitRestart() override { keep("triggerAitRestart"); }
    void tuneToService(int idType, int onid, int tsid, int sid, int flags) override {
        keep("tuneToService", idType, onid, tsid, sid, flags);
        tuned(sid);
    }
    void tuneToService(const std::string& descriptor, int sid, int flags) override {
        keep("tuneToService", descriptor, sid, flags);
    }
    void tuneToComponent(int first, int second, int third) override { keep("tuneToComponent", first, second, third); }
    void selectComponent(int type) override { keep("selectComponent", type); }
    void unselectComponent(int type) override { keep("unselectComponent", type); }
    int setAudioSource(std::string source) override { return answer("setAudioSource", source); }
    void addListener(std::shared_ptr<velmora::dtv::DVBServiceListener> listener) override {
        keep("addListener");
        listeners.push_back(listener);
    }
    void removeListener(std::shared_ptr<velmora::dtv::DVBServiceListener>) override { keep("removeListener"); }
    void notifyMwhbStart() override {
        keep("notifyMwhbStart");
        notified();
    }
    int sendPtsRequest(std::uint32_t request) override { return answer("sendPtsRequest", request); }
    int startTemiTimelineRequest(std::uint32_t first, std::uint32_t second, std::uint32_t third) override {
        return answer("startTemiTimelineRequest", first, second, third);
    }
    int stopTemiTimelineRequest() override { return answer("stopTemiTimelineRequest"); }
    int startOSDDetection(std::uint32_t layer) override { return answer("startOSDDetection", layer); }
    int stopOSDDetection(std::uint32_t layer) override { return answer("stopOSDDetection", layer); }
    int sendDrmMessage(std::uint64_t session, std::uint16_t caSystem, std::uint16_t third, const std::string& fourth,
                       const std::string& fifth) override {
        return answer("sendDrmMessage", session, caSystem, third, fourth, fifth);
    }
    int connectCa(std::uint64_t session) override { return answer("connectCa", session); }
    int disconnectCa(std::uint16_t slot) override { return answer("disconnectCa", slot); }
    int sendOpAppInstallStatus(int type, int status) override { return answer("sendOpAppInstallStatus", type, status); }
    void vbStartDtvInfoRequest() override { keep("vbStartDtvInfoRequest"); }

private:
    template <typename... Values>
    void keep(const char* operation, const Values&... values) {
        std::ostringstream text;
        [[maybe_unused]] const char* separator = "";
        text << operation << '(';
        ((text << separator << values, separator = ", "), ...);
        text << ')';
        calls.push_back(text.str());
    }
    template <typename... Values>
    int answer(const char* operation, const Values&... values) {
        keep(operation, values...);
        return result;
    }
};
