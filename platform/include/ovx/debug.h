// The debug library: every line that the process logs. Callers ask first whether a level is wanted, so that a line that
// nobody reads costs one load and no formatting. All operations may be called on any thread, at any time of the
// process's life, and never fail.
#pragma once

#include <cstdint>

#include "frame/api.h"

struct ovxDebugFrame;
struct ovxDebugChunk;

extern "C" {

/// Says whether lines of `level` are written: non-zero, and `frame` and `chunk` filled for the call of
/// ovxDebugOutput0() that follows; or 0. High bits of a level name the module (0x5F), low 16 bits the importance: 1
/// always, 1000 failure, 3000 warning, 4000 ordinary, 5000 trace.
DTV_PLATFORM_API int ovxDebugCheckLevelGetFrameAndChunk(std::uint32_t level, ovxDebugFrame** frame,
                                                        ovxDebugChunk** chunk);

/// Formats as printf does and writes the line, whole, to the process's log.
DTV_PLATFORM_API void ovxDebugOutput0(ovxDebugFrame* frame, ovxDebugChunk* chunk, std::uint32_t level,
                                      const char* format, ...) __attribute__((format(printf, 4, 5)));

/// The part of a path behind its last '/'; a pointer into `path`. Null gives the empty text.
DTV_PLATFORM_API const char* blog_base_name(const char* path);

/// Writes `count` bytes as hexadecimal text under a title; `value` is shown beside the title. Level: ordinary.
DTV_PLATFORM_API void dump_memory(const char* title, const void* bytes, std::uint32_t count, int value);
}
