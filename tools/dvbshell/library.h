// The library as a browser gets it: loaded by path, asked for its interfaces by name.
// Threads: the program's main one.
// Blocks:  while loading.
// Fails:   with a text that names the library and the reason.
#pragma once

#include <memory>
#include <string>

#include "dvb_api_interface.h"

namespace dvbshell {

/// Where the library is when nobody says: beside the program, in ../lib.
std::string defaultLibraryPath();

/// Loads the library and gets an interface by its name. Null, with the reason, when that cannot be had.
velmora::dtv::IDTVUnknown* loadInterface(const std::string& path, const char* name, std::string& error);

/// A function that the library exports, by its name for the linker. Null, with the reason, when that cannot be had.
void* loadFunction(const std::string& path, const char* name, std::string& error);

/// Loads the library and gets the DVB API. Null, with the reason, when that cannot be had. The library stays loaded.
velmora::dtv::DvbAPIInterface* loadDvbApi(const std::string& path, std::string& error);

}  // namespace dvbshell
