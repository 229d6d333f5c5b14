// For builds without libdvbv5: refuses DVB adapters.
#include "dvb_source.h"

namespace dtvservice {

std::string checkDvb(const InputName& input) {
    return "input \"" + input.text + "\": this build has no DVB adapters: libdvbv5 was missing";
}

std::unique_ptr<ByteSource> openDvb(const InputName& input, int, std::string& error) {
    error = checkDvb(input);
    return nullptr;
}

}  // namespace dtvservice
