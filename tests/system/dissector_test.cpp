// Every message of the catalogue, seen by a protocol analyser with the generated dissector.
#include "watched_bus.h"

namespace {

/// The analyser's text of a value as a number, in any notation.
message_fields::Value numberOf(const std::string& text) {
    if (text[0] == '-') {
        return static_cast<std::int64_t>(std::stoll(text));
    }
    constexpr int kAnyNotation = 0;
    return static_cast<std::uint64_t>(std::stoull(text, nullptr, kAnyNotation));
}

/// Negative numbers stay negative, others lose their sign's type.
message_fields::Value plain(const message_fields::Value& value) {
    const auto* const number = std::get_if<std::int64_t>(&value);
    return number != nullptr && *number >= 0 ? message_fields::Value(static_cast<std::uint64_t>(*number)) : value;
}

/// "AB0C" from "ab:0c".
std::string digitsOf(const std::string& bytes) {
    std::string digits;
    for (const char character : bytes) {
        if (character != ':') {
            digits += static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
        }
    }
    return digits;
}

void expectShown(const message_fields::FieldValue& value, const std::string& shown) {
    using message_fields::Notation;
    if (const auto* const text = std::get_if<std::string>(&value.value)) {
        const Notation notation = value.field->form->notation;
        const bool isBytes = notation == Notation::bytes || notation == Notation::section;
        EXPECT_EQ(isBytes ? digitsOf(shown) : shown, isBytes ? message_fields::hexadecimal(*text) : *text)
            << value.field->name;
    } else {
        EXPECT_EQ(numberOf(shown), plain(value.value)) << value.field->name << " " << shown;
    }
}

}  // namespace

TEST_F(AWatchedBus, IsShownByAProtocolAnalyser) {
    const std::string file = OwnRunDirectory::instance().path() + "/bus.pcapng";
    const auto writer = monitor({"--write", file});
    const std::vector<Sent> all = sendsEveryMessage();
    core.tap.refused(bus::Direction::toService, 3, 0x28671243, "no room", -11);
    const auto analysed = [&file] {
        ChildProcess analyser(TSHARK, {"-X", "lua_script:" DISSECTOR, "-r", file, "-T", "json"}, "tshark",
                              Runner::machine);
        analyser.wait();
        const std::string text = analyser.output();
        return json::parse(text.substr(text.find("[\n")), nullptr, false);
    };
    json packets;
    ASSERT_TRUE(eventually(
        [&] {
            packets = analysed();
            return packets.is_array() && packets.size() == all.size() + 1;
        },
        std::chrono::minutes(1)));
    for (std::size_t index = 0; index < all.size(); ++index) {
        const json& shown = packets[index]["_source"]["layers"]["dtvbus"];
        EXPECT_EQ(shown["dtvbus.operation"], all[index].operation);
        EXPECT_EQ(shown["dtvbus.record.browser"], "3");
        EXPECT_FALSE(shown.contains("_ws.expert")) << all[index].operation;
        for (const message_fields::FieldValue& value : all[index].values) {
            const std::string key = std::string("dtvbus.") + value.field->name;
            ASSERT_TRUE(shown.contains(key)) << all[index].operation << " " << key;
            expectShown(value, shown[key]);
        }
    }
    const json& refused = packets.back()["_source"]["layers"]["dtvbus"];
    EXPECT_EQ(refused["dtvbus.record.result"], "-11");
    EXPECT_EQ(refused["dtvbus.record.text"], "no room");
    EXPECT_EQ(refused["dtvbus.operation"], "cmdFilterOpen");
}
