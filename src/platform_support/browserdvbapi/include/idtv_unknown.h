// IDTVUnknown: what every interface of the library begins with, and the function that hands the interfaces out.
//
// Binary rules of all browser-facing headers:
//  1. The order of virtual operations never changes; a virtual destructor in front takes two entries of the table.
//  2. Interfaces have no data members, no default arguments and no inline bodies but defaulted destructors.
//  3. Strings, vectors and std::shared_ptr cross the boundary: browser and library use the same C++ standard library.
//  4. Objects of the library are never deleted by the browser, objects of the browser never by the library.
#pragma once

#include <string>

#define DTV_BROWSER_API __attribute__((visibility("default")))

namespace velmora::dtv {

class IDTVUnknown {
public:
    virtual ~IDTVUnknown() = default;

    /// Does nothing: the interfaces live until the process ends. May be called in any number and order, on any thread.
    virtual void AddRef() = 0;
    /// Does nothing, as AddRef().
    virtual void Release() = 0;
    /// The name under which DTVAPI_QueryInterface() hands this interface out.
    virtual std::string name() = 0;
};

}  // namespace velmora::dtv

extern "C" {

/// Hands out an interface by its exact name: "DvbAPIInterface" (velmora::dtv::DvbAPIInterface), "SectionFilterAPI"
/// (velmora::dtv::DVBSectionInterface) or "DvbAITAPI" (velmora::dtv::DVBAITSectionInterface); cast `*out` to that type
/// with static_cast. The same name always gives the same pointer.
/// 0, or -1 for any other name, with `*out` unchanged. A null `name` throws std::logic_error; `out` may not be null.
/// Any thread. The first call of an interface's operation that needs the DTV service connects to it.
DTV_BROWSER_API int DTVAPI_QueryInterface(const char* name, velmora::dtv::IDTVUnknown** out);
}
