// The library's entry point: returns the three interface objects by name.
#include "idtv_unknown.h"

#include <stdexcept>
#include <string>

#include "browser_dvb_apis.h"
#include "browser_log.h"
#include "dvbaitsection_apis.h"
#include "section_filter_api.h"

namespace {

constexpr const char* kBlogTag = velmora::dvbservice::kTagBrowser;

}  // namespace

int DTVAPI_QueryInterface(const char* name, velmora::dtv::IDTVUnknown** out) {
    // Logs before the name is checked, so that a failing call is logged too.
    BLOG_TAGGED(blog::kOrdinary, "Creating interface : %s\n", name != nullptr ? name : "(null)");
    if (name == nullptr) {
        // Callers know this text; thrown here so that it does not depend on the C++ library.
        throw std::logic_error("basic_string::_M_construct null not valid");
    }
    const std::string wanted(name);
    if (wanted == "DvbAPIInterface") {
        *out = velmora::dvbservice::BrowserDvbAPI::getInstance();
        return 0;
    }
    if (wanted == "SectionFilterAPI") {
        *out = velmora::dvbservice::SectionFilterAPI::getInstance();
        return 0;
    }
    if (wanted == "DvbAITAPI") {
        *out = velmora::dvbservice::DvbAITSectionAPI::getInstance();
        return 0;
    }
    BLOG_TAGGED(blog::kUnsupported, "Interface Not Supported: %s\n", name);
    return -1;
}
