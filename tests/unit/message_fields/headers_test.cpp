// The parameters in the headers for browsers have the names of the list.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>

#include "message_fields.h"

namespace {

using namespace message_fields;

std::string headerText(const char* name) {
    std::ifstream file(std::string(HEADER_FOLDER "/") + name);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// "componentTag" as "component_tag".
std::string inSmallLetters(const std::string& word) {
    std::string name;
    for (const char letter : word) {
        const bool isCapital = letter >= 'A' && letter <= 'Z';
        name += isCapital ? std::string("_") + static_cast<char>(letter - 'A' + 'a') : std::string(1, letter);
    }
    return name;
}

/// The names of all parameters in "std::uint16_t onid, const std::string& section", with a blank between two.
std::string namesIn(const std::string& parameters) {
    static const std::regex name("([A-Za-z_]+)\\s*(,|$)");
    std::string names;
    for (std::sregex_iterator each(parameters.begin(), parameters.end(), name), end; each != end; ++each) {
        names += (names.empty() ? "" : " ") + inSmallLetters((*each)[1]);
    }
    return names;
}

/// The operations whose parameters are values, with their names as in the list.
std::map<std::string, std::set<std::string>> declaredIn(const char* header) {
    static const std::regex operation("virtual [A-Za-z:]+ (\\w+)\\(([^)]*)\\) = 0;");
    const std::string text = headerText(header);
    std::map<std::string, std::set<std::string>> declared;
    for (std::sregex_iterator each(text.begin(), text.end(), operation), end; each != end; ++each) {
        const std::string name = (*each)[1];
        if (name != "addListener" && name != "removeListener") {
            declared[name].insert(namesIn((*each)[2]));
        }
    }
    return declared;
}

void expectListed(const char* header, Operation::Kind kind, std::size_t least) {
    const auto declared = declaredIn(header);
    EXPECT_GE(declared.size(), least);
    for (const auto& [name, parameters] : declared) {
        std::set<std::string> listed;
        for (const Operation& operation : operations()) {
            if (operation.kind == kind && operation.name == name) {
                // getCurrentChannelInfo() returns its values through its parameters.
                listed.insert(name == "getCurrentChannelInfo" ? operation.results : operation.parameters);
            }
        }
        EXPECT_EQ(parameters, listed) << header << ": " << name;
    }
}

}  // namespace

TEST(TheHeadersForBrowsers, NameTheParametersOfEventsAsTheListDoes) {
    expectListed("dvb_service_listener.h", Operation::Kind::event, 10);
}

TEST(TheHeadersForBrowsers, NameTheParametersOfCallsAsTheListDoes) {
    expectListed("dvb_api_interface.h", Operation::Kind::call, 10);
}
