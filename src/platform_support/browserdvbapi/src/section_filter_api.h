// SectionFilterAPI: implements "SectionFilterAPI". Forwards to the service object. The section operations convert its
// codes to bool; the PMT operations return them unchanged.
// Threads: any.
// Blocks:  startSection(), stopSection() up to about ten seconds.
// Locks:   none.
#pragma once

#include "dvb_section_interface.h"

namespace velmora::dvbservice {

class DTV_BROWSER_API SectionFilterAPI : public dtv::DVBSectionInterface {
public:
    static SectionFilterAPI* GetInstance();
    static SectionFilterAPI* getInstance();

    void AddRef() override;
    void Release() override;
    std::string name() override;
    int startPMTRequest(dtv::SectionFilterClient* client, const std::string& sessionName,
                        unsigned int serviceId) override;
    int stopPMTRequest(dtv::SectionFilterClient* client, const std::string& sessionName) override;
    std::string generateSessionName() override;
    bool startSection(dtv::SectionFilterClient* client, const std::string& sessionName, unsigned int pid,
                      const unsigned char* mask, const unsigned char* maskBits, int length) override;
    bool stopSection(dtv::SectionFilterClient* client, const std::string& sessionName) override;
};

}  // namespace velmora::dvbservice
