// The names of the message catalogue's fields, and how a reader sees their values: notation, unit, JSON type, named
// values. Tools, services and documents take them from here, so that a value is called and written the same everywhere.
// Threads: any; all data is constant.
// Blocks:  never.
// Fails:   never; a value without a name is written as its number.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace message_fields {

/// A constant array.
template <typename Item>
struct List {
    const Item* first = nullptr;
    std::size_t count = 0;

    constexpr const Item* begin() const { return first; }
    constexpr const Item* end() const { return first + count; }
    constexpr std::size_t size() const { return count; }
    constexpr bool empty() const { return count == 0; }
    constexpr const Item& operator[](std::size_t index) const { return first[index]; }
};

struct NamedValue {
    std::int64_t value;
    const char* name;
};

enum class Notation { decimal, hexadecimal, both, flag, flags, language, text, bytes, section, triplet, record };
enum class JsonType { number, boolean, text, listOfTexts, none };

/// How values are written. An enumeration is a text in JSON, and a number with a few named values stays a number there.
struct Form {
    const char* name;
    Notation notation;
    JsonType json;
    int digits = 0;            ///< hexadecimal: how many at least
    const char* unit = "";     ///< empty for a number without one
    List<NamedValue> names{};  ///< flags: the names of the bits
};

/// Who gave a field its meaning: the interface, by the field's name or its use in the library, or the reference DTV
/// service. Another DTV service may put something else into a field of the second kind.
enum class Origin { interface, reference };

struct Field {
    const char* message;  ///< operation of the catalogue, or nested record
    const char* member;   ///< the catalogue's name of the field
    const char* name;     ///< the reader's name
    const Form* form;
    Origin origin;
    const char* meaning;
};

/// A command, an event or a nested record of the catalogue.
struct Message {
    enum class Kind { record, command, event };
    Kind kind;
    const char* name;
    std::uint32_t identifier;  ///< 0 for a nested record
    const char* types;         ///< "(U32, request)(String, path)"
};

/// What a browser calls or is called with, or what dvbshell reports by itself.
struct Operation {
    enum class Kind { call, event, report };
    Kind kind;
    const char* name;
    const char* message;     ///< the command that it sends, or the event that causes it; empty for none
    const char* parameters;  ///< names with a blank between two
    const char* results;     ///< of a call: names of what it returns beside a status
};

using Value = std::variant<std::uint64_t, std::int64_t, std::string>;

/// The value of a parameter of any type: whole numbers, enumerations, flags and texts.
template <typename Parameter>
Value valueOf(const Parameter& value) {
    if constexpr (std::is_convertible_v<const Parameter&, std::string>) {
        return std::string(value);
    } else if constexpr (std::is_enum_v<Parameter>) {
        return valueOf(static_cast<std::underlying_type_t<Parameter>>(value));
    } else if constexpr (std::is_signed_v<Parameter>) {
        return static_cast<std::int64_t>(value);
    } else {
        return static_cast<std::uint64_t>(value);
    }
}

struct FieldValue {
    const Field* field;
    Value value;
};

/// The catalogue's entries, in its order.
List<Message> messages();
/// All fields of all messages, in the catalogue's order.
List<Field> fields();
/// The fields of a message; none for an unknown one.
List<Field> fieldsOf(std::string_view message);
/// The names that only the browser's interface has.
List<Field> additions();
/// The browser's operations and dvbshell's reports. tuneToService and onSectionData stand twice, with different
/// parameters.
List<Operation> operations();
/// Where a message is used that no operation of the browser's stands for; empty for any other message.
const char* useOf(std::string_view message);
/// The parameters or results of an operation, `names` being its text. A name is looked up in the operation's message,
/// then anywhere.
std::vector<const Field*> fieldsOf(const Operation& operation, std::string_view names);
/// The parameters of the operation with this name and number of parameters; of none if there is no such operation.
std::vector<const Field*> parametersOf(std::string_view operation, std::size_t count);
/// Any field with the name, null for an unknown one. All fields of a name have the same form.
const Field* findField(std::string_view name);

/// "video", "0x0B", "eng", "400 (0x190)", "yes"; bytes and sections in hexadecimal digits.
std::string valueText(const Form& form, const Value& value);
/// The names of the bits that are set, and the number of any other bits.
std::vector<std::string> flagNames(const Form& form, const Value& value);
/// "pid 257", "pts 12345 (90 kHz)"
std::string text(const FieldValue& value);
/// All values in one line with a comma between two; onid, tsid and sid together as "service 1:1025:28106".
std::string text(const std::vector<FieldValue>& values);
/// "component_tag 0x0B": the value as the field with this name writes it; the name must be one.
std::string namedText(const char* name, std::uint64_t number);
/// "0x0B", with `digits` digits at least.
std::string hexadecimalNumber(std::uint64_t number, int digits);
/// Hexadecimal digits, two a byte.
std::string hexadecimal(std::string_view bytes);

}  // namespace message_fields
