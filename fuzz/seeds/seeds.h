// The seeds, by what they are made from.
// Threads: one.
// Blocks:  while writing.
// Fails:   ends the process.
#pragma once

#include "seed_files.h"

namespace fuzz {

/// Sections and packets of the sample and of a broadcast of everything, whose description has folders relative to
/// `base`.
void writeBroadcastSeeds(SeedFiles& files, const std::string& everything, const std::string& base);
/// Every message, and those of a running service and its browser.
void writeMessageSeeds(SeedFiles& files);
/// Lines of the operator, descriptions, and other texts.
void writeTextSeeds(SeedFiles& files, const std::string& everything);

}  // namespace fuzz
