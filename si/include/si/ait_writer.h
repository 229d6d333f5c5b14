// Writes AIT sections (TS 102 809, clause 5.3.4).
// Threads: any.
// Blocks:  never.
// Fails:   std::length_error when a descriptor or the section is too long.
#pragma once

#include "si/ait.h"
#include "si/section_writer.h"

namespace si {

/// The most bytes of an HTTP transport's URL base and of an initial path, each in one descriptor.
constexpr std::size_t kLongestUrlBase = 250;
constexpr std::size_t kLongestInitialPath = 255;

/// The section that parseAit() reads as these values: its applications with profiles, names, transports by HTTP and by
/// carousels of the service, initial path and boundaries. Texts are written as they are, so one that is not ASCII
/// begins with the bytes that select its character table.
Section aitSection(const Ait& ait);

}  // namespace si
