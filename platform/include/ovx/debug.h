// The debug library: writes all log lines of the process. Callers first check whether a level is wanted; an unwanted
// line then costs one load and no formatting. Operations may be called on any thread, at any time of the process's
// life, and never fail.
#pragma once

#include <cstdint>

#include "frame/api.h"

struct ovxDebugFrame;
struct ovxDebugChunk;

extern "C" {

/// Says whether lines of `level` are written: 0, or non-zero with `frame` and `chunk` filled for the following call of
/// ovxDebugOutput0(). The high bits of a level name the module (0x5F), the low 16 bits the importance: 1 always, 1000
/// failure, 3000 warning, 4000 ordinary, 5000 trace.
DTV_PLATFORM_API int ovxDebugCheckLevelGetFrameAndChunk(std::uint32_t level, ovxDebugFrame** frame,
                                                        ovxDebugChunk** chunk);

/// Formats like printf and writes the complete line to the process's log.
DTV_PLATFORM_API void ovxDebugOutput0(ovxDebugFrame* frame, ovxDebugChunk* chunk, std::uint32_t level,
                                      const char* format, ...) __attribute__((format(printf, 4, 5)));

/// The part of a path after its last '/', as a pointer into `path`. Null gives the empty text.
DTV_PLATFORM_API const char* blog_base_name(const char* path);

/// Writes `count` bytes as hexadecimal text under a title; `value` is shown beside the title. Level: ordinary.
DTV_PLATFORM_API void dump_memory(const char* title, const void* bytes, std::uint32_t count, int value);
}
