// Texts as words.
// Threads: any.
// Blocks:  never.
// Fails:   with a text that says which quote is open.
#pragma once

#include <string>
#include <vector>

namespace dvbshell {

/// Splits a line into words at blanks. Single and double quotes keep blanks in a word. False, with the reason, when a
/// quote is not closed.
bool splitWords(const std::string& line, std::vector<std::string>& words, std::string& error);

/// Splits a text at each separator. N separators give N + 1 parts.
std::vector<std::string> split(const std::string& text, char separator);

}  // namespace dvbshell
