// Loads the library by path and asks for its interfaces by name, as a browser does.
// Threads: the program's main one.
// Blocks:  while loading.
// Fails:   with a text that names the library and the reason.
#pragma once

#include <memory>
#include <string>

#include "dvb_api_interface.h"

namespace dvbshell {

/// The default path of the library: ../lib beside the program.
std::string defaultLibraryPath();

/// Loads the library and gets an interface by name. Null, with the reason, on failure.
velmora::dtv::IDTVUnknown* loadInterface(const std::string& path, const char* name, std::string& error);

/// Loads the library and finds an exported function by its mangled name. Null, with the reason, on failure.
void* loadFunction(const std::string& path, const char* name, std::string& error);

/// Loads the library and gets the DVB API. Null, with the reason, on failure. The library stays loaded.
velmora::dtv::DvbAPIInterface* loadDvbApi(const std::string& path, std::string& error);

}  // namespace dvbshell
