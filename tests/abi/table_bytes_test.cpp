// Compares the byte-order tables in the loaded library, byte by byte, with the accepted bytes for this width.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <map>
#include <sstream>

#include "hex_text.h"
#include "message_counts.h"

namespace {

constexpr std::size_t kWord = sizeof(void*);
constexpr std::size_t kFirstWord = 4;

std::string linesOf(const std::string& path) {
    std::ifstream file(path);
    std::string text;
    for (std::string line; std::getline(file, line);) {
        if (line.compare(0, 1, "#") != 0) {
            text += line + "\n";
        }
    }
    return text;
}

std::string hexAt(const std::uint8_t* bytes, std::size_t count) {
    return hexText(std::vector<std::uint8_t>(bytes, bytes + count));
}

const std::uint8_t* pointerAt(const std::uint8_t* bytes) {
    const std::uint8_t* pointer = nullptr;
    std::memcpy(&pointer, bytes, sizeof pointer);
    return pointer;
}

/// Reads a table through its symbol as a platform does: head, entries, end. Heads and entries are two words each.
class TableReader {
public:
    TableReader() : library(dlopen(LIBRARY_FILE, RTLD_NOW)) {}

    bool isLoaded() const { return library != nullptr; }

    std::string read(const std::string& symbol) {
        const std::uint8_t* const head = find(symbol);
        if (head == nullptr) {
            return symbol + " is not there\n";
        }
        std::string text = symbol + " " + hexAt(head, kFirstWord) + "\n";
        const std::uint8_t* entry = pointerAt(head + kWord);
        for (int count = 0; count < 100; ++count, entry += 2 * kWord) {
            const std::string first = hexAt(entry, kFirstWord);
            text += "  " + first + " " + secondWord(pointerAt(entry + kWord)) + "\n";
            if (first == "00000000") {
                return text;
            }
        }
        return text + "  has no end\n";
    }

private:
    const std::uint8_t* find(const std::string& symbol) {
        return static_cast<const std::uint8_t*>(dlsym(library, symbol.c_str()));
    }
    std::string secondWord(const std::uint8_t* pointer) {
        if (pointer == nullptr) {
            return "null";
        }
        if (reinterpret_cast<std::uintptr_t>(pointer) == 0xFFFFFFFFU) {
            return "FFFFFFFF";
        }
        for (const char* record : {
                 "ovxDeserString_t",
                 "ovxDeserBlobUint8_t",
                 "ovxDeserVectorU8_t",
#define NESTED(Record, fields) "serializable_" #Record,
#include "browserdvbservice_messages.inc"
             }) {
            std::string symbol = std::string("__ovx_EndianTable_") + record;
            if (find(symbol) == pointer) {
                return symbol;
            }
        }
        return "points to no table";
    }

    void* library;
};

}  // namespace

TEST(TheLoadedLibrary, HoldsTheByteOrderTablesByteForByte) {
    const std::string expected = linesOf(GOLDEN_FOLDER "/endian_tables_" + std::to_string(kWord * 8) + ".golden");
    TableReader reader;
    ASSERT_TRUE(reader.isLoaded()) << dlerror();
    std::istringstream lines(expected);
    std::string found;
    std::size_t tables = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, 1, " ") != 0) {
            found += reader.read(line.substr(0, line.find(' ')));
            ++tables;
        }
    }
    EXPECT_EQ(tables, kCommands + kEvents + kNestedRecords);
    EXPECT_EQ(found, expected);
}
