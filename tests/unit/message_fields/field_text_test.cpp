// How values are written.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "message_fields.h"
#include "si/ait.h"

using namespace message_fields;

namespace {

std::string written(const char* field, const Value& value) {
    return valueText(*findField(field)->form, value);
}

std::string written(const char* field, std::uint64_t number) {
    return written(field, Value(number));
}

std::string written(const char* field, std::int64_t number) {
    return written(field, Value(number));
}

constexpr std::uint64_t kUnnamed = 200;

}  // namespace

TEST(AFieldsValue, HasItsNotation) {
    EXPECT_EQ(written("pid", std::uint64_t{257}), "257");
    EXPECT_EQ(written("component_tag", std::uint64_t{0x0B}), "0x0B");
    EXPECT_EQ(written("encoding", std::uint64_t{0x6A06}), "0x6A06");
    EXPECT_EQ(written("organisation_id", std::uint64_t{400}), "400 (0x190)");
    EXPECT_EQ(written("language", std::uint64_t{0x656E67}), "eng");
    EXPECT_EQ(written("scrambled", std::uint64_t{1}), "yes");
    EXPECT_EQ(written("result", std::int64_t{-1}), "-1");
    EXPECT_EQ(written("ca_session", ~std::uint64_t{0}), "18446744073709551615");
    EXPECT_EQ(written("message", Value(std::string("two words"))), "two words");
    EXPECT_EQ(written("data", Value(std::string("\x01\xFF"))), "01FF");
}

TEST(AFieldsValue, HasANameWhereThereIsOne) {
    EXPECT_EQ(written("component_type", std::uint64_t{0}), "video");
    EXPECT_EQ(written("id_type", std::uint64_t{12}), "ID_DVB_T");
    EXPECT_EQ(written("aspect_ratio", std::uint64_t{3}), "16:9");
    EXPECT_EQ(written("update", std::int64_t{1}), "changed");
    EXPECT_EQ(written("ait_state", std::uint64_t{1}), "signalled");
    EXPECT_EQ(written("osd_state", std::uint64_t{1}), "shown");
    EXPECT_EQ(written("module_status", std::uint64_t{0}), "removed");
    EXPECT_EQ(written("application_status", std::int64_t{1}), "failed");
    EXPECT_EQ(written("result_code", std::uint64_t{5}), "unknown DRM system");
    EXPECT_EQ(written("slot", std::uint64_t{65535}), "none");
    EXPECT_EQ(written("component_tag", std::int64_t{-1}), "any");
    EXPECT_EQ(written("component_index", std::uint64_t{0xFFFFFFFF}), "none");
}

TEST(AFieldsValue, IsANumberIfItHasNoName) {
    for (const Field& field : fields()) {
        if (!field.form->names.empty()) {
            const std::string text = valueText(*field.form, kUnnamed);
            EXPECT_EQ(text, field.form->notation == Notation::hexadecimal ? "0xC8" : "200") << field.name;
        }
    }
    EXPECT_EQ(written("language", std::uint64_t{0x016E67}), "0x016E67");
    EXPECT_EQ(written("language", std::uint64_t{0}), "");
}

TEST(AFieldsValue, ListsTheFlagsThatAreSet) {
    EXPECT_EQ(written("timeline_flags", std::uint64_t{0}), "none");
    EXPECT_EQ(written("timeline_flags", std::uint64_t{3}), "paused+discontinuity");
    EXPECT_EQ(written("timeline_flags", std::uint64_t{0x44}), "force_reload+64");
    EXPECT_THAT(flagNames(*findField("timeline_flags")->form, std::uint64_t{6}),
                testing::ElementsAre("discontinuity", "force_reload"));
}

TEST(AFieldsValue, StandsBehindItsNameAndBeforeItsUnit) {
    EXPECT_EQ(namedText("pts", 12345), "pts 12345 (90 kHz)");
    EXPECT_EQ(namedText("timescale", 1000), "timescale 1000 (ticks a second)");
    EXPECT_EQ(namedText("component_tag", 11), "component_tag 0x0B");
    EXPECT_EQ(text({findField("message"), std::string()}), "message -");
}

TEST(FieldsValues, StandInOneLineWithTheTripletAsOne) {
    std::vector<FieldValue> values;
    for (const char* const name : {"update", "onid", "tsid", "sid", "pid"}) {
        values.push_back({findField(name), std::uint64_t{values.size() + 1}});
    }
    EXPECT_EQ(text(values), "update changed, service 2:3:4, pid 5");
}

TEST(ControlCodes, HaveTheNamesThatTheTablesHave) {
    constexpr unsigned int kCodes = 256;
    for (unsigned int code = 0; code < kCodes; ++code) {
        EXPECT_EQ(written("application_control_code", std::uint64_t{code}),
                  si::controlCodeName(static_cast<std::uint8_t>(code)));
    }
}
