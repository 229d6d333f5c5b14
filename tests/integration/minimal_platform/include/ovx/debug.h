// The log.
#pragma once

#include <cstdint>

struct ovxDebugFrame;
struct ovxDebugChunk;

extern "C" {
int ovxDebugCheckLevelGetFrameAndChunk(std::uint32_t level, ovxDebugFrame** frame, ovxDebugChunk** chunk);
void ovxDebugOutput0(ovxDebugFrame* frame, ovxDebugChunk* chunk, std::uint32_t level, const char* format, ...)
    __attribute__((format(printf, 4, 5)));
const char* blog_base_name(const char* path);
void dump_memory(const char* title, const void* bytes, std::uint32_t count, int value);
}
