// Tests of the description of data that lies, is cut short or is not data at all; and of the kinds of fields.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>

#include "described.h"
#include "packets.h"
#include "tables.h"

namespace {

using si::describeSection;
using si::Node;
using testing::ElementsAre;

const tsmake::Multiplex kSample = tsmake::sampleMultiplex();

/// The bytes of a descriptor.
std::string hexDescriptor(unsigned int tag, const std::string& content) {
    const auto size = static_cast<std::uint8_t>(content.size() / 2);
    return hexOf({static_cast<std::uint8_t>(tag), size}) + content;
}

/// A section of every known table.
std::vector<tsmake::Section> tableSections() {
    const auto& service = kSample.services[0];
    return {
        tsmake::patSection(kSample),
        tsmake::pmtSection(service),
        tsmake::nitSection(kSample),
        tsmake::sdtSection(kSample),
        tsmake::eitSection(kSample, service, true),
        tsmake::aitSection(service),
        tsmake::tdtSection(kSample, 61),
        longSection(0x01, 0xFFFF, "0904 0500 f68a"),
        longSection(0x03, 0xFFFF, "0504 48455643"),
        longSection(0x3B, 2,
                    "1103100280000002ff000024000000f10fe200000000000000000000000000010007000000b90502abcd0000"),
        longSection(0x3B, 0, "1103100680000000ff00001affffffffffffffffffffffffffffffffffffffff00000002beef"),
        longSection(0x3C, 1, "110310030000000cff000009000102ff0003aabbcc"),
        longSection(0x3D, 7, "1a0d0007fffffffe000000004142438001ff"),
        longSection(0x4A, 1, "f00b470448616c6c490380444 5f00f04012114f0095f040000002841010 0"),
        longSection(0x4B, 0x015A,
                    "00015a00f003020155 00100001010c0100015a00070002018001ff 0010f0050803414243f0070305000a010277"),
        longSection(0x4C, 0x01AB, "12345600f00706056465754142 f0070905e000010120f00b0d09000121140401 6dca0b"),
        longSection(0x79, 0x0102,
                    "01f0067304612e6465 f02103782e79f00742050401211405 03622e63d00e410cc079000000c07a0000000200"),
        longSection(0x7F, 0xFFFF, "f00a6308c00001c00002c003 6dcac003520109"),
        bytesOfHex("717009 0401 2114 6dca 07d1 fc"),
        bytesOfHex("727002 abcd"),
        bytesOfHex("7e7001 ff"),
        withCrc(bytesOfHex("73701a c079124500 f00f 580d 444555 02 0100 d8a2010000 0200 00000000")),
    };
}

/// Sections with every tag, once with zeros and once with ones: in an event of an EIT, in an AIT, a UNT, an INT, an
/// RNT, behind a private_data_specifier, and as descriptor_tag_extension.
std::vector<tsmake::Section> descriptorSections() {
    std::vector<tsmake::Section> all;
    for (const char* const content : {"000000000000000000000000", "ffffffffffffffffffffffff"}) {
        for (unsigned int tag = 0; tag < 0x100; ++tag) {
            const std::string bytes = hexDescriptor(tag, content);
            all.push_back(longSection(0x4E, 1, "0401 2114 00 4e 0001 c079124500 010000 000e" + bytes));
            all.push_back(longSection(0x74, 0x10, "f00e" + bytes + "f000"));
            all.push_back(longSection(0x4B, 1, "00015a00 f00e" + bytes));
            all.push_back(longSection(0x4C, 1, "00015a00 f00e" + bytes));
            all.push_back(longSection(0x79, 1, "01 f00e" + bytes));
            all.push_back(longSection(0x40, 1, "f014 5f04 00000028" + bytes + "f000"));
            all.push_back(longSection(
                0x40, 1, "f00f" + hexDescriptor(0x7F, hexOf({static_cast<std::uint8_t>(tag)}) + content) + "f000"));
        }
    }
    return all;
}

std::vector<tsmake::Section> allSections() {
    std::vector<tsmake::Section> all = tableSections();
    for (tsmake::Section& section : descriptorSections()) {
        all.push_back(std::move(section));
    }
    return all;
}

/// Calls with each node of a tree.
template <typename Take>
void forEachNode(const Node& node, Take take) {
    take(node);
    for (const Node& child : node.nodes) {
        forEachNode(child, take);
    }
}

/// "name=text" of all fields of a tree except some.
std::vector<std::string> allFields(const Node& tree, const std::set<std::string>& except) {
    std::vector<std::string> all;
    forEachNode(tree, [&](const Node& node) {
        for (const Node::Field& field : node.fields) {
            if (except.count(field.name) == 0) {
                all.push_back(field.name + "=" + field.text);
            }
        }
    });
    return all;
}

/// Describes a copy whose memory ends with the section, so that sanitizers detect reads beyond it.
Node describeExactly(const tsmake::Section& section) {
    tsmake::Section copy(section.begin(), section.end());
    copy.shrink_to_fit();
    return describeSection(copy);
}

/// A correct CRC_32 for the tables that have one.
tsmake::Section repaired(const tsmake::Section& section) {
    const bool hasCrc = section.size() > 4 && ((section[1] & 0x80) != 0 || section[0] == 0x73);
    return hasCrc ? withCrc(section) : section;
}

/// Expects a description of every tag with these contents: tag and length, then its fields or bytes.
void expectEveryTagIsDescribed(const std::vector<std::uint8_t>& contents) {
    constexpr unsigned int kTags = 256;
    for (unsigned int tag = 0; tag < kTags; ++tag) {
        std::vector<std::uint8_t> loop = {static_cast<std::uint8_t>(tag), static_cast<std::uint8_t>(contents.size())};
        loop.insert(loop.end(), contents.begin(), contents.end());
        const Node nit = nitWith(loop);
        ASSERT_EQ(nit.nodes.size(), 1U) << "tag " << tag << " contents " << hexOf(contents);
        EXPECT_EQ(value(nit.nodes[0], "tag"), "0x" + hexOf({static_cast<std::uint8_t>(tag)}));
        EXPECT_EQ(value(nit.nodes[0], "length"), std::to_string(contents.size()));
        if (value(nit.nodes[0], "bytes") != hexOf(contents)) {
            EXPECT_EQ(nit.nodes[0].fields.at(2).name, std::string("is")) << "tag " << tag << " " << hexOf(contents);
        }
    }
}

}  // namespace

TEST(ADescriptionOfBadData, KeepsTheRestBesideAWrongLength) {
    tsmake::SectionWriter writer(0x42, 1025, 0);
    writer.u16(8468).u8(0xFF);
    writer.u16(1).u8(0xFC).open12().openDescriptor(0x52).u8(7).close().text("\x48\x05\x01").close();
    writer.u16(2).u8(0xFC).open12().openDescriptor(0x52).u8(8).close().close();
    writer.u16(3).u8(0xFC).u16(0xF002).u8(0x52);
    const Node sdt = describeSection(writer.finish());
    EXPECT_EQ(value(sdt, "original_network_id"), "8468");
    ASSERT_EQ(sdt.nodes.size(), 3U);
    ASSERT_EQ(sdt.nodes[0].nodes.size(), 2U);
    EXPECT_EQ(sdt.nodes[0].nodes[1].name, "unreadable");
    EXPECT_EQ(value(sdt.nodes[0].nodes[1], "bytes"), "480501");
    EXPECT_EQ(value(sdt.nodes[1].nodes.at(0), "tag"), "0x52");
    EXPECT_EQ(line(sdt.nodes[2]),
              " service_id=3, EIT_schedule_flag=0, EIT_present_following_flag=0, running_status=7, free_CA_mode=1 "
              "{unreadable: wrong=descriptors_loop_length is 2, bytes left: 1, bytes=F00252}");
}

TEST(ADescriptionOfBadData, NamesTheLengthThatLies) {
    const Node nit = describeSection(longSection(0x40, 1, "f004 4002 4142 f00d 0401 2114 f003 5201 0b 0402 21"));
    EXPECT_EQ(value(descriptor(nit, "network_name"), "network_name"), "AB");
    EXPECT_EQ(line(nit.nodes.at(1)),
              " wrong=transport_stream_loop_length is 13, bytes left: 12, bytes=F00D04012114F00352010B040221");
}

TEST(ADescriptionOfBadData, ShowsABadDescriptorByItsBytes) {
    for (const char* const loop : {
             "4502 01fe",  // VBI data: 254 bytes, of none
             "4800",
             "5700",
             "5e00",                // nothing at all
             "4503 010204",         // a service of two bytes, of one
             "4803 190100",         // a provider, and no length of the name
             "4d05 6465750100",     // likewise
             "4e06 00646575 0501",  // items of five bytes, of none
             "5104 0000 00fc",      // cells of 252 bytes
             "5b04 646575fc",
             "5c04 646575fc",  // names of 252 bytes
             "5d05 646575fb00",
             "5e05 01646575fc",                // likewise
             "5703 000001",                    // a core number of one byte
             "4a0b 0401000100010e 03 00010c",  // an extended event of five bytes, of three
             "6409 000a0100646575 0541",       // a text of five bytes, of one
             "6c0b 000100000000000000 0100",   // a subcell of one byte
             "6d08 000100000000 0100",         // likewise
             "2103 020001",                    // a multiplex code without its slots
         }) {
        const Node nit = nitWith(bytesOfHex(loop));
        ASSERT_FALSE(nit.nodes.empty());
        for (const Node& node : nit.nodes) {
            EXPECT_NE(value(node, "bytes"), "(no bytes)") << loop;
        }
    }
}

TEST(ADescriptionOfBadData, EndsForEveryDescriptorContent) {
    constexpr std::uint8_t kBytes[] = {0x00, 0x7F, 0xFF};
    constexpr std::size_t kMostShort = 12;
    for (const std::uint8_t first : kBytes) {
        for (const std::uint8_t other : kBytes) {
            for (std::size_t length = 0; length <= kMostShort; ++length) {
                std::vector<std::uint8_t> contents(length, other);
                std::vector<std::uint8_t> alternating = contents;
                for (std::size_t at = 0; at < length; at += 2) {
                    alternating[at] = first;
                }
                expectEveryTagIsDescribed(alternating);
                std::fill_n(contents.begin(), std::min<std::size_t>(length, 1), first);
                expectEveryTagIsDescribed(contents);
            }
            std::vector<std::uint8_t> longest(0xFF, other);
            longest[0] = first;
            expectEveryTagIsDescribed(longest);
            longest.pop_back();
            expectEveryTagIsDescribed(longest);
        }
    }
}

TEST(ADescriptionOfBadData, HasBytesAndReason) {
    tsmake::Section broken = tsmake::patSection(kSample);
    broken.back() ^= 1U;
    const Node node = describeSection(broken);
    EXPECT_EQ(node.name, "section");
    EXPECT_EQ(value(node, "unreadable"), "PAT section: wrong CRC_32");
    EXPECT_EQ(value(node, "bytes").size(), 2 * broken.size());
    EXPECT_EQ(describeSection(bytesOfHex("c0")).name, "section");
    EXPECT_EQ(describeSection(bytesOfHex("")).name, "section");
    const Node unknown = describeSection(bytesOfHex("c0700100"));
    EXPECT_THAT(fields(unknown), ElementsAre("table_id=0xC0", "size=4", "bytes=C0700100"));
}

TEST(ADescriptionOfBadData, OfAnyChangedByteKeepsTheTable) {
    std::size_t changes = 0;
    std::size_t described = 0;
    for (const tsmake::Section& section : tableSections()) {
        for (std::size_t at = 3; at < section.size(); ++at) {
            for (const unsigned int changed : {0x00U, 0x01U, 0x7FU, 0xFFU}) {
                tsmake::Section copy = section;
                copy[at] = static_cast<std::uint8_t>(changed);
                ++changes;
                described += describeExactly(repaired(copy)).name != "section" ? 1 : 0;
            }
        }
    }
    EXPECT_EQ(described, changes);
    EXPECT_GT(changes, 3000U);
}

/// The prefix has the right section_length and CRC_32, so that only the lengths within it lie.
TEST(ADescriptionOfBadData, OfAnyPrefixShowsOnlyFieldsOfTheWhole) {
    const std::set<std::string> depending = {"wrong",     "bytes",          "additional_bytes",
                                             "data_byte", "blockDataBytes", "carries"};
    for (const tsmake::Section& section : tableSections()) {
        constexpr std::size_t kShortest = 12;
        const Node whole = describeSection(section);
        const std::vector<std::string> wholeFields = allFields(whole, depending);
        for (std::size_t size = 0; size < section.size(); ++size) {
            tsmake::Section prefix(section.begin(), section.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_EQ(describeExactly(prefix).name, "section");
            if (size < kShortest) {
                continue;
            }
            prefix[1] = static_cast<std::uint8_t>((prefix[1] & 0xF0U) | (size - 3) >> 8U);
            prefix[2] = static_cast<std::uint8_t>(size - 3);
            const Node node = describeExactly(repaired(prefix));
            EXPECT_EQ(node.name, whole.name);
            const std::vector<std::string> some = allFields(node, depending);
            EXPECT_TRUE(some.size() <= wholeFields.size() && std::equal(some.begin(), some.end(), wholeFields.begin()))
                << hexOf(prefix) << line(node);
        }
    }
}

/// The descriptor's length fits, but its content is short.
TEST(ADescriptionOfBadData, OfAShortDescriptorNamesTheMissingField) {
    std::size_t named = 0;
    for (const std::string& content : {std::string(24, '0'), std::string(24, 'F')}) {
        for (unsigned int tag = 0; tag < 0x100; ++tag) {
            for (std::size_t size = 0; size <= content.size(); size += 2) {
                const auto loop = bytesOfHex(hexDescriptor(tag, content.substr(0, size)));
                const Node nit = nitWith(loop);
                ASSERT_EQ(nit.nodes.size(), 1U);
                const std::string wrong = value(nit.nodes[0], "wrong");
                if (wrong != "(no wrong)") {
                    EXPECT_EQ(value(nit.nodes[0], "bytes"), content.substr(0, size));
                    EXPECT_THAT(wrong, testing::AnyOf(testing::EndsWith(" is missing"),
                                                      testing::ContainsRegex(" is [0-9]+, bytes left: [0-9]+$"),
                                                      testing::EndsWith(" has a digit above 9")));
                    ++named;
                }
            }
        }
    }
    EXPECT_GT(named, 500U);
}

TEST(ADescriptionOfBadData, OfRandomBytesEnds) {
    std::mt19937 random(1);
    const auto byte = [&random] { return static_cast<std::uint8_t>(random()); };
    for (int round = 0; round < 20000; ++round) {
        tsmake::Section section(12 + random() % 200);
        std::generate(section.begin(), section.end(), byte);
        section[1] = static_cast<std::uint8_t>(section[1] & 0xF0U);
        section[2] = static_cast<std::uint8_t>(section.size() - 3);
        const Node node = describeExactly(repaired(section));
        EXPECT_EQ(value(node, "table_id"), "0x" + hexOf({section[0]}).substr(0, 2));
    }
}

TEST(ADescription, GivesAFieldNameTheSameKindInEveryTable) {
    std::map<std::string, bool> isNumber;
    std::map<std::string, char> notations;
    std::size_t count = 0;
    const auto notationOf = [](const std::string& text) {
        return text.rfind("0x", 0) == 0 ? 'x' : text.find(" (0x") != std::string::npos ? 'b' : 'd';
    };
    for (const tsmake::Section& section : allSections()) {
        forEachNode(describeSection(section), [&](const Node& node) {
            for (const Node::Field& field : node.fields) {
                ++count;
                const bool number = field.number.has_value();
                EXPECT_EQ(isNumber.emplace(field.name, number).first->second, number) << field.name;
                if (number) {
                    const char notation = notationOf(field.text);
                    EXPECT_EQ(notations.emplace(field.name, notation).first->second, notation) << field.name;
                }
            }
        });
    }
    EXPECT_GT(count, 10000U);
    for (const char* const name :
         {"table_id", "stream_type", "tag", "application_type", "protocol_id", "CA_system_id", "private_data_specifier",
          "application_profile", "component_tag", "data_broadcast_id", "application_control_code", "service_type"}) {
        EXPECT_EQ(notations[name], 'x') << name;
    }
    EXPECT_EQ(notations["organisation_id"], 'b');
    EXPECT_EQ(notations["application_id"], 'b');
    EXPECT_EQ(notations["original_network_id"], 'd');
    EXPECT_EQ(notations["elementary_PID"], 'd');
    EXPECT_EQ(notations["running_status"], 'd');
}

TEST(ADescription, HasFieldsThatCannotBeTakenForChildNodes) {
    for (const tsmake::Section& section : allSections()) {
        forEachNode(describeSection(section), [&](const Node& node) {
            std::set<std::string> children = {"name"};
            for (const Node& child : node.nodes) {
                children.insert(child.name + "s");
            }
            for (const Node::Field& field : node.fields) {
                EXPECT_EQ(children.count(field.name), 0U) << field.name;
                EXPECT_EQ(field.text.find("has no known type"), std::string::npos) << field.text;
            }
        });
    }
}
