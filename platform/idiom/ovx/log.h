// Logging macros over the debug library: they check the level, then write the line with its place in the source.
// Two forms: BLOG_TAGGED writes "[tag] file:line:function(): " before the message; BLOG_PLAIN writes the same without
// the tag. Both take the level, the message's format and up to nine values. A source file that uses BLOG_TAGGED defines
// kBlogTag.
#pragma once

#include <cstdint>

#include "ovx/debug.h"

namespace blog {

constexpr std::uint32_t kAlways = 0x5F0001;
constexpr std::uint32_t kFailure = 0x5F03E8;
constexpr std::uint32_t kUnsupported = 0x5F0BB8;
constexpr std::uint32_t kOrdinary = 0x5F0FA0;
constexpr std::uint32_t kTrace = 0x5F1388;

}  // namespace blog

#define BLOG_WRITE(level, ...)                                                        \
    do {                                                                              \
        ovxDebugFrame* blogFrame = nullptr;                                           \
        ovxDebugChunk* blogChunk = nullptr;                                           \
        if (ovxDebugCheckLevelGetFrameAndChunk(level, &blogFrame, &blogChunk) != 0) { \
            ovxDebugOutput0(blogFrame, blogChunk, level, __VA_ARGS__);                \
        }                                                                             \
    } while (false)

// The prefix's values come before the message's values, so these macros separate the message's format from its values.
#define BLOG_FORMAT(...) BLOG_FORMAT_OF(__VA_ARGS__, ~)
#define BLOG_FORMAT_OF(format, ...) format
#define BLOG_VALUES(...)                                                                                            \
    BLOG_TENTH(__VA_ARGS__, BLOG_SOME, BLOG_SOME, BLOG_SOME, BLOG_SOME, BLOG_SOME, BLOG_SOME, BLOG_SOME, BLOG_SOME, \
               BLOG_SOME, BLOG_NONE, ~)                                                                             \
    (__VA_ARGS__)
#define BLOG_TENTH(a, b, c, d, e, f, g, h, i, j, tenth, ...) tenth
#define BLOG_NONE(format)
#define BLOG_SOME(format, ...) , __VA_ARGS__

/// For code that serves several operations: the caller gives the function's name.
#define BLOG_PLAIN_AS(level, function, ...)                                                        \
    BLOG_WRITE(level, "%s:%d:%s(): " BLOG_FORMAT(__VA_ARGS__), blog_base_name(__FILE__), __LINE__, \
               function BLOG_VALUES(__VA_ARGS__))
#define BLOG_TAGGED_AS(level, function, ...)                                                                      \
    BLOG_WRITE(level, "[%s] %s:%d:%s(): " BLOG_FORMAT(__VA_ARGS__), kBlogTag, blog_base_name(__FILE__), __LINE__, \
               function BLOG_VALUES(__VA_ARGS__))

#define BLOG_PLAIN(level, ...) BLOG_PLAIN_AS(level, __func__, __VA_ARGS__)
#define BLOG_TAGGED(level, ...) BLOG_TAGGED_AS(level, __func__, __VA_ARGS__)
