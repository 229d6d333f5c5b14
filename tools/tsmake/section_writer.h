// The writer of sections, under tsmake's names.
#pragma once

#include "si/section_writer.h"

namespace tsmake {

using si::Section;
using si::SectionWriter;

}  // namespace tsmake
