// The operations of the DVB API as a table: name, arguments, help and call. Help, completion, parsing and the prompt
// use it. Every slot of the interface has a row.
// Threads: one.
// Blocks:  as long as the operation does (audio-source until the TV has switched).
// Fails:   parsing, with a text that names the argument and its valid values.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "dvb_api_interface.h"
#include "message_fields.h"

namespace dvbshell {

class AitLink;

/// The valid values of an argument: a number between two bounds or one of its names, any text, or bytes in hexadecimal.
struct Parameter {
    enum class Kind { number, text, hexBytes };
    std::string name;  ///< the field's name in capitals
    Kind kind = Kind::number;
    std::int64_t least = 0;
    std::uint64_t most = 0;
    message_fields::List<message_fields::NamedValue> names{};  ///< of an enumeration
};

/// A parsed argument. `number` holds negative numbers too, in two's complement.
struct Value {
    std::uint64_t number = 0;
    std::string text;

    template <typename Number>
    Number as() const {
        return static_cast<Number>(number);
    }
};
using Values = std::vector<Value>;

/// The result of an operation, the values that it returns, and what the shell says of it; empty for an operation
/// without them.
struct Outcome {
    std::optional<int> result;
    std::vector<message_fields::FieldValue> values;
    std::optional<std::string> text;
};

/// The objects that operations use: the API, the listener that the shell registers, and the link to the AIT catcher.
struct Host {
    velmora::dtv::DvbAPIInterface& api;
    std::shared_ptr<velmora::dtv::DVBServiceListener> listener;
    AitLink* ait = nullptr;
};

struct Operation {
    const char* name;
    const char* slot;  ///< its name in the interface
    std::vector<Parameter> parameters;
    const char* help;
    std::function<Outcome(Host&, const Values&)> call;
};

/// All operations in slot order, without the slots of the root interface.
const std::vector<Operation>& operations();
/// Null when no operation has that name.
const Operation* findOperation(const std::string& name);
/// "tune-numbers ID_TYPE ONID TSID SID FLAGS"
std::string synopsis(const Operation& operation);

/// Reads the arguments after an operation's name. False, with the reason, when one is wrong.
bool parseValues(const Operation& operation, const std::vector<std::string>& words, Values& values, std::string& error);

/// Bytes from hexadecimal digits, two for each byte; false for other text.
bool parseHex(const std::string& word, std::string& bytes);

}  // namespace dvbshell
