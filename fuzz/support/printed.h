// What a printer of dvbshell writes for an event.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

#include "printer.h"

namespace fuzz {

template <typename Printer>
std::string printed(const dvbshell::Event& event) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* const stream = open_memstream(&text, &size);
    Printer(stream).print(event, "ccid:1:2:3");
    std::fclose(stream);
    std::string written(text, size);
    std::free(text);
    return written;
}

}  // namespace fuzz
