// The DVB triplet of a service, and its text form.
#pragma once

#include <string>
#include <vector>

namespace dvbshell {

struct Triplet {
    int onid = 0;
    int tsid = 0;
    int sid = 0;
};

/// Reads "onid:tsid:sid", each in decimal or in hexadecimal after 0x; false when it is not three numbers up to 65535.
bool parseTriplet(const std::string& text, Triplet& triplet);
/// "onid:tsid:sid" in decimal.
std::string tripletText(const Triplet& triplet);
/// Splits a text at each separator. N separators give N + 1 parts.
std::vector<std::string> split(const std::string& text, char separator);

}  // namespace dvbshell
