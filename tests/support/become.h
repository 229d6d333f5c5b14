// Executes another program after a fork, in the emulator if the tests run in it.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

/// How to run a program: like the tests, or directly on the machine if it was built for it.
enum class Runner { emulator, machine };

/// Executes the program at `program` with its arguments; exits with 127 when that fails. The environment names the
/// emulator to scripts, for the programs that they start.
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
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    execvp(pointers[0], pointers.data());
    _exit(127);
}
