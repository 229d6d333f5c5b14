// The shell's table of operations, its words and arguments, its output.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <set>

#include "json_printer.h"
#include "operations.h"
#include "printer.h"
#include "tables.h"
#include "valid_json.h"
#include "words.h"

namespace {

using namespace dvbshell;

const tsmake::Multiplex kSample = tsmake::sampleMultiplex();

std::vector<std::string> wordsOf(const std::string& line) {
    std::vector<std::string> words;
    std::string error;
    EXPECT_TRUE(splitWords(line, words, error)) << error;
    return words;
}

std::string errorOf(const std::string& line) {
    const std::vector<std::string> words = wordsOf(line);
    Values values;
    std::string error;
    EXPECT_FALSE(parseValues(*findOperation(words[0]), {words.begin() + 1, words.end()}, values, error)) << line;
    return error;
}

Values valuesOf(const std::string& line) {
    const std::vector<std::string> words = wordsOf(line);
    Values values;
    std::string error;
    EXPECT_TRUE(parseValues(*findOperation(words[0]), {words.begin() + 1, words.end()}, values, error)) << error;
    return values;
}

/// What a printer writes.
class Output {
public:
    Output() : file(open_memstream(&text, &size)) {}
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output() {
        std::fclose(file);
        std::free(text);
    }
    std::string written() {
        std::fflush(file);
        return {text, size};
    }
    std::FILE* stream() { return file; }

private:
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* file;
};

Event sectionEvent(EventKind kind, const char* name, const tsmake::Section& section) {
    Event event;
    event.kind = kind;
    event.name = name;
    event.onid = 1;
    event.tsid = 1025;
    event.sid = 28107;
    event.section.assign(section.begin(), section.end());
    return event;
}

}  // namespace

TEST(ALine, IsSplitAtBlanksOutsideOfQuotes) {
    EXPECT_THAT(wordsOf("a  \"b c\"d\t\"\""), testing::ElementsAre("a", "b cd", ""));
    EXPECT_THAT(wordsOf("'b c'd '' \"it's\" 'a \"b\"'"), testing::ElementsAre("b cd", "", "it's", "a \"b\""));
    EXPECT_TRUE(wordsOf(" \t").empty());
}

TEST(ALine, IsRefusedWhereAQuoteIsNotClosed) {
    std::vector<std::string> words;
    std::string error;
    EXPECT_FALSE(splitWords("audio-source \"a\" \"b c", words, error));
    EXPECT_EQ(error, "the double quote at character 18 is not closed");
    EXPECT_FALSE(splitWords("it's", words, error));
    EXPECT_EQ(error, "the single quote at character 3 is not closed");
}

TEST(TheShellsTable, HasARowForEverySlotOfTheInterface) {
    std::vector<std::string> slots;
    std::set<std::string> names;
    for (const Operation& operation : operations()) {
        slots.push_back(operation.slot);
        EXPECT_TRUE(names.insert(operation.name).second) << operation.name;
    }
    std::vector<std::string> calls;
    for (const message_fields::Operation& operation : message_fields::operations()) {
        if (operation.kind == message_fields::Operation::Kind::call) {
            calls.emplace_back(operation.name);
        }
    }
    EXPECT_EQ(slots, calls) << "a row in tools/dvbshell/operation_table.cpp, a CALL in browser_operations.inc";
}

TEST(AnArgument, IsTakenAtTheEndsOfItsRange) {
    EXPECT_EQ(valuesOf("select -2147483648")[0].as<int>(), -2147483647 - 1);
    EXPECT_EQ(valuesOf("select 2147483647")[0].as<int>(), 2147483647);
    EXPECT_EQ(valuesOf("pts 4294967295")[0].as<std::uint32_t>(), 4294967295U);
    EXPECT_EQ(valuesOf("ca-connect 18446744073709551615")[0].number, 18446744073709551615ULL);
    EXPECT_EQ(valuesOf("ca-disconnect 0xffff")[0].as<std::uint16_t>(), 65535);
    EXPECT_EQ(valuesOf("tune-dsd 5A000b 1 0")[0].text, std::string("\x5A\x00\x0B", 3));
    EXPECT_EQ(valuesOf("audio-source \"two words\"")[0].text, "two words");
    EXPECT_EQ(valuesOf("audio-source \"\"")[0].text, "");
}

TEST(AnArgument, MayBeTheNameOfAnEnumerationsValue) {
    EXPECT_EQ(valuesOf("select subtitle")[0].as<int>(), 2);
    EXPECT_EQ(valuesOf("unselect video")[0].as<int>(), 0);
    EXPECT_EQ(valuesOf("tune-component audio 257 0")[0].as<int>(), 1);
    EXPECT_EQ(valuesOf("tune-numbers ID_DVB_SI_DIRECT 1 1025 28106 0")[0].as<int>(), 13);
}

TEST(AnArgument, IsNamedInAnErrorWithItsValidValues) {
    const std::string types = "\" is neither video, audio, subtitle nor a number from -2147483648 to 2147483647";
    EXPECT_EQ(errorOf("select 2147483648"), "select: COMPONENT_TYPE: \"2147483648" + types);
    EXPECT_EQ(errorOf("unselect Video"), "unselect: COMPONENT_TYPE: \"Video" + types);
    EXPECT_EQ(errorOf("osd-start none"), "osd-start: LAYER: \"none\" is not a number from 0 to 4294967295");
    EXPECT_EQ(errorOf("pts -1"), "pts: PTS_REQUEST: \"-1\" is not a number from 0 to 4294967295");
    EXPECT_EQ(errorOf("pts 1x"), "pts: PTS_REQUEST: \"1x\" is not a number from 0 to 4294967295");
    EXPECT_EQ(errorOf("ca-disconnect 65536"), "ca-disconnect: SLOT: \"65536\" is not a number from 0 to 65535");
    EXPECT_EQ(errorOf("tune-dsd 5A0 1 0"), "tune-dsd: DSD: \"5A0\" is not bytes in hexadecimal");
    EXPECT_EQ(errorOf("tune-dsd zz 1 0"), "tune-dsd: DSD: \"zz\" is not bytes in hexadecimal");
    EXPECT_EQ(errorOf("temi-start 1 2"), "temi-start takes 3 arguments: temi-start COMPONENT_TAG TIMELINE_ID RESERVED");
}

TEST(APrinter, ShowsAnUnreadableSectionAsBytes) {
    Output output;
    Printer printer(output.stream());
    Event event;
    event.kind = EventKind::pmt;
    event.section = "bad";
    printer.print(event, "");
    EXPECT_THAT(output.written(), testing::HasSubstr("cannot be read: PMT section: only 3 bytes: 626164"));
}

TEST(APrinter, AlignsWhatATableHolds) {
    Output output;
    Printer printer(output.stream());
    printer.print(
        sectionEvent(EventKind::eit, "onEITSectionUpdated", tsmake::eitSection(kSample, kSample.services[1], false)),
        "");
    EXPECT_THAT(output.written(),
                testing::HasSubstr("EIT      present of service 28107, version 0\n"
                                   "                    2026-01-01 09:00-10:00 UTC  Die große Küche\n"));
}

TEST(AJsonPrinter, WritesOneObjectOnEachLine) {
    Output output;
    JsonPrinter printer(output.stream());
    printer.print(sectionEvent(EventKind::ait, "onAITSectionUpdated", tsmake::aitSection(kSample.services[1])), "");
    const std::string line = output.written();
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1);
    EXPECT_THAT(line, testing::StartsWith("{\"time\":"));
    EXPECT_THAT(line, testing::HasSubstr(R"(,"event":"onAITSectionUpdated","onid":1,"tsid":1025,"sid":28107,)"));
    EXPECT_THAT(line, testing::HasSubstr("\"initial_path\":\"start.html\""));
    EXPECT_THAT(line, testing::HasSubstr("\"section\":\"74"));
}

TEST(AJsonPrinter, EscapesWhatAPeerSends) {
    Output output;
    JsonPrinter printer(output.stream());
    Event event;
    event.name = "onDrmResultReply";
    event.values = {namedValue("message", std::string("a\"b\\c\n\x01\xFF", 8))};
    printer.print(event, "");
    EXPECT_THAT(output.written(), testing::HasSubstr("\"message\":\"a\\\"b\\\\c\\n\\u0001\xEF\xBF\xBD\""));
}

TEST(AJsonPrinter, WritesAnOperationsResult) {
    Output output;
    JsonPrinter printer(output.stream());
    printer.result(*findOperation("pts"), {-107, {}, {}});
    printer.result(*findOperation("dtv-info"), {});
    EXPECT_THAT(output.written(),
                testing::MatchesRegex("[{]\"time\":[0-9.]+,\"operation\":\"sendPtsRequest\",\"result\":-107[}]\n"
                                      "[{]\"time\":[0-9.]+,\"operation\":\"vbStartDtvInfoRequest\"[}]\n"));
}

TEST(AnEventQueue, GivesWhatTheListenerHeardInOrder) {
    EventQueue queue;
    const auto listener = makeListener(queue);
    listener->OnChannelChanged(true, 1, 2, 3);
    listener->onAITSectionUpdated(4, 5, 6, "ait");
    listener->onPtsNotify(7, 8);
    const auto now = Clock::now();
    const std::optional<Event> channel = queue.take(now);
    ASSERT_TRUE(channel);
    EXPECT_EQ(channel->kind, EventKind::channel);
    EXPECT_EQ(channel->sid, 3);
    EXPECT_EQ(queue.take(now)->section, "ait");
    EXPECT_EQ(message_fields::text(queue.take(now)->values), "pts 7 (90 kHz), pcr_base 8 (90 kHz)");
    EXPECT_FALSE(queue.take(now));
}
