// Marks what the platform library exports. The browser library and the DTV service see the platform only through
// functions and classes that carry this mark.
#pragma once

#define DTV_PLATFORM_API __attribute__((visibility("default")))
