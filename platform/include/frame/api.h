// Marks what the platform library exports. The browser library and the DTV service use only functions and classes with
// this mark.
#pragma once

#define DTV_PLATFORM_API __attribute__((visibility("default")))
