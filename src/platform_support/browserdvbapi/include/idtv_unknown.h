// IDTVUnknown: the base of every interface of the library, and the function that returns the interfaces.
//
// Binary rules of all browser-facing headers:
//  1. The order of virtual operations never changes. A virtual destructor in front takes two virtual-table entries.
//  2. Interfaces have no data members, no default arguments and no inline bodies except defaulted destructors.
//  3. Strings, vectors and std::shared_ptr cross the boundary: browser and library use the same C++ standard library.
//  4. The browser never deletes objects of the library; the library never deletes objects of the browser.
#pragma once

#include <string>

#define DTV_BROWSER_API __attribute__((visibility("default")))

/// The first names the lock of a field, the second a lock that a function's caller holds. Only this project's own build
/// checks them, with clang; for all others they are empty.
#ifdef DTV_CHECK_LOCKS
#define DTV_GUARDED_BY(mutex) __attribute__((guarded_by(mutex)))
#define DTV_REQUIRES(mutex) __attribute__((requires_capability(mutex)))
#else
#define DTV_GUARDED_BY(mutex)
#define DTV_REQUIRES(mutex)
#endif

namespace velmora::dtv {

class IDTVUnknown {
public:
    virtual ~IDTVUnknown() = default;

    /// Does nothing: the interfaces live until the process ends. Call it any number of times, on any thread.
    virtual void AddRef() = 0;
    /// Does nothing, as AddRef().
    virtual void Release() = 0;
    /// The name that DTVAPI_QueryInterface() takes for this interface.
    virtual std::string name() = 0;
};

}  // namespace velmora::dtv

extern "C" {

/// Returns an interface by its exact name: "DvbAPIInterface" (velmora::dtv::DvbAPIInterface), "SectionFilterAPI"
/// (velmora::dtv::DVBSectionInterface) or "DvbAITAPI" (velmora::dtv::DVBAITSectionInterface). Cast `*out` to that type
/// with static_cast. The same name always gives the same pointer.
/// Returns 0, or -1 for any other name; `*out` is then unchanged. A null `name` throws std::logic_error; `out` must not
/// be null.
/// May be called on any thread. The first operation that needs the DTV service connects to it.
DTV_BROWSER_API int DTVAPI_QueryInterface(const char* name, velmora::dtv::IDTVUnknown** out);
}
