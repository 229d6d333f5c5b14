// The operations of the DVB API as a table: name, arguments, help and call. Help, completion, parsing and the prompt
// are made from it; every slot of the interface has its row.
// Threads: one.
// Blocks:  as the operation does (audio-source until the TV has changed over).
// Fails:   parsing with a text that names the argument and what it may be.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "dvb_api_interface.h"

namespace dvbshell {

class AitLink;

/// What an argument may be: a number between two bounds, any text, or bytes in hexadecimal.
struct Parameter {
    enum class Kind { number, text, hexBytes };
    const char* name;
    Kind kind = Kind::number;
    std::int64_t least = 0;
    std::uint64_t most = 0;
};

/// A parsed argument. A number is kept in 64 bits, whatever its sign.
struct Value {
    std::uint64_t number = 0;
    std::string text;

    template <typename Number>
    Number as() const {
        return static_cast<Number>(number);
    }
};
using Values = std::vector<Value>;

/// What an operation gave back; nothing for one without a result.
struct Outcome {
    std::optional<int> result;
    std::optional<std::string> text;
};

/// What operations work on: the API, the listener that the shell registers with it, and the way to the AIT catcher.
struct Host {
    velmora::dtv::DvbAPIInterface& api;
    std::shared_ptr<velmora::dtv::DVBServiceListener> listener;
    AitLink* ait = nullptr;
};

struct Operation {
    const char* name;
    const char* slot;  ///< the interface's operation
    std::vector<Parameter> parameters;
    const char* help;
    std::function<Outcome(Host&, const Values&)> call;
};

/// All operations: one row a slot of the interface, behind those of its root.
const std::vector<Operation>& operations();
/// Null when there is none of that name.
const Operation* findOperation(const std::string& name);
/// "tune ID_TYPE ONID TSID SID FLAGS"
std::string synopsis(const Operation& operation);

/// Reads the arguments behind an operation's name. False with the reason.
bool parseValues(const Operation& operation, const std::vector<std::string>& words, Values& values, std::string& error);

/// Bytes from hexadecimal digits, two a byte; false when they are none.
bool parseHex(const std::string& word, std::string& bytes);

/// Splits a line into words at blanks; double quotes keep blanks together. False with the reason where one is not
/// closed.
bool splitWords(const std::string& line, std::vector<std::string>& words, std::string& error);

}  // namespace dvbshell
