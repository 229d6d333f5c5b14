// Building filter records.
#include "filter_parameter.h"

namespace velmora::dvbservice {

FilterParameter::FilterParameter(dtv::SectionFilterClient* client, const std::string& sessionName, unsigned int pid,
                                 const unsigned char* mask, const unsigned char* maskBytes, int length)
    : sessionName_(sessionName), pid_(pid), client_(client) {
    if (length >= 1) {
        mask_.assign(mask, mask + length);
        maskBits.assign(maskBytes, maskBytes + length);
    }
}

boost::shared_ptr<FilterParameter> FilterParameter::create(dtv::SectionFilterClient* client,
                                                           const std::string& sessionName, unsigned int pid,
                                                           const unsigned char* mask, const unsigned char* maskBits,
                                                           int length) {
    return boost::shared_ptr<FilterParameter>(new FilterParameter(client, sessionName, pid, mask, maskBits, length));
}

}  // namespace velmora::dvbservice
