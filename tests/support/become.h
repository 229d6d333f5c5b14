// Becoming another program after a fork, run by the emulator where the tests themselves are.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

/// What runs a program: what runs the tests too, or the machine, for a program that was built for it.
enum class Runner { emulator, machine };

/// The program by path with its arguments; ends with 127 when it cannot be run. A script is told of the emulator, for
/// the programs that it starts.
[[noreturn]] inline void become(const std::string& program, std::vector<std::string> arguments,
                                Runner runner = Runner::emulator) {
    std::vector<std::string> emulator = EMULATOR;
    std::string emulatorWords;
    for (const std::string& word : emulator) {
        emulatorWords += word + " ";
    }
    setenv("DTV_EMULATOR", emulatorWords.c_str(), 1);
    if (runner == Runner::machine) {
        emulator.clear();
    }
    arguments.insert(arguments.begin(), program);
    const bool isScript = program.size() > 3 && program.compare(program.size() - 3, 3, ".sh") == 0;
    if (!isScript) {
        arguments.insert(arguments.begin(), emulator.begin(), emulator.end());
    }
    std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    execvp(pointers[0], pointers.data());
    _exit(127);
}
