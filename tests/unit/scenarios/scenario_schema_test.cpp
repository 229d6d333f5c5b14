// The published schema and what reads scenarios agree.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validator.hpp>

#include "scenario.h"

namespace {

using nlohmann::json;
using Adapter = valijson::adapters::NlohmannJsonAdapter;

std::string textOf(const std::filesystem::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool fitsTheSchema(const std::string& text) {
    static const json kText = json::parse(textOf(SCENARIO_SCHEMA));
    valijson::Schema schema;
    valijson::SchemaParser(valijson::SchemaParser::kDraft7).populateSchema(Adapter(kText), schema);
    const json value = json::parse(text);
    valijson::Validator validator;
    return validator.validate(schema, Adapter(value), nullptr);
}
bool isScenario(const std::string& text) {
    std::string error;
    return dtvservice::parseScenario(text, error).has_value();
}
/// The validator's whole numbers have 64 bits with a sign.
constexpr std::uint64_t kMostOfTheValidator = std::numeric_limits<std::int64_t>::max();

/// A value within or outside of the key's range.
json valueOf(const dtvservice::Key& key, bool isRight) {
    using Kind = dtvservice::Key::Kind;
    switch (key.kind) {
        case Kind::whole:
            return isRight ? json(std::min(key.most, kMostOfTheValidator)) : json(key.least - 1);
        case Kind::number:
            return isRight ? json(0.5) : json(key.most + 1);
        case Kind::flag:
            return isRight ? json(true) : json(1);
        case Kind::text:
            return isRight ? json("x") : json(1);
        case Kind::command:
            return isRight ? "cmdTuneToService" : "onFilterOpened";
        case Kind::event:
            return isRight ? "onFilterOpened" : "cmdTuneToService";
        default:
            return isRight ? "signal-lost" : "undo";
    }
}
/// Each action with all its keys; one of them may be wrong or missing.
std::string stepWith(const dtvservice::Action& action, const std::string& wrong, const std::string& missing) {
    json values = json::object();
    for (const dtvservice::Key& key : action.keys) {
        if (key.name != missing) {
            values[key.name] = valueOf(key, key.name != wrong);
        }
    }
    return json{{"steps", {{{"at", 0}, {action.name, values}}}}}.dump();
}

}  // namespace

TEST(TheSchemaOfScenarios, AgreesOnEveryKeyOfEveryAction) {
    for (const dtvservice::Action& action : dtvservice::actions()) {
        const std::string all = stepWith(action, "", "");
        EXPECT_TRUE(isScenario(all) && fitsTheSchema(all)) << all;
        for (const dtvservice::Key& key : action.keys) {
            const std::string wrong = stepWith(action, key.name, "");
            EXPECT_FALSE(isScenario(wrong) || fitsTheSchema(wrong)) << wrong;
            const std::string missing = stepWith(action, "", key.name);
            EXPECT_EQ(isScenario(missing), !key.isRequired) << missing;
            EXPECT_EQ(fitsTheSchema(missing), !key.isRequired) << missing;
        }
    }
}

TEST(TheSchemaOfScenarios, AgreesOnScenariosAndSteps) {
    const std::string step = R"({"at":0,"stop-terminals":{}})";
    for (const std::string& good :
         {R"({"steps":[)" + step + "]}", R"({"name":"a","seconds":1,"repeat":2,"stay":false,"steps":[)" + step + "]}",
          std::string(R"({"steps":[{"upon":"cmdFilterOpen","nth":2,"browser":1,"after":1,"stop-terminals":{}}]})"),
          std::string(R"({"seconds":2,"steps":[{"upon":"cmdFilterOpen","every":true,"stop-terminals":{}}]})")}) {
        EXPECT_TRUE(isScenario(good) && fitsTheSchema(good)) << good;
    }
    for (const std::string& bad :
         {std::string("[]"), std::string("{}"), std::string(R"({"steps":[]})"), std::string(R"({"steps":7})"),
          std::string(R"({"steps":[7]})"), R"({"other":1,"steps":[)" + step + "]}",
          R"({"repeat":0,"steps":[)" + step + "]}", R"({"stay":1,"steps":[)" + step + "]}",
          std::string(R"({"steps":[{"at":0}]})"), std::string(R"({"steps":[{"stop-terminals":{}}]})"),
          std::string(R"({"steps":[{"at":0,"upon":"cmdFilterOpen","stop-terminals":{}}]})"),
          std::string(R"({"steps":[{"at":0,"stop-terminals":{},"signal-lost":{}}]})"),
          std::string(R"({"steps":[{"at":0,"nth":1,"stop-terminals":{}}]})"),
          std::string(R"({"seconds":1,"steps":[{"upon":"cmdFilterOpen","nth":1,"every":true,"stop-terminals":{}}]})"),
          std::string(R"({"steps":[{"at":0,"stop-terminals":{},"unknown":{}}]})"),
          std::string(R"({"steps":[{"at":0,"stop-terminals":{"unknown":1}}]})"),
          std::string(R"({"steps":[{"at":0,"stop-terminals":true}]})")}) {
        EXPECT_FALSE(isScenario(bad) || fitsTheSchema(bad)) << bad;
    }
}

TEST(TheExamplesOfScenarios, FitSchemaAndReader) {
    std::size_t count = 0;
    for (const auto& file : std::filesystem::directory_iterator(EXAMPLES)) {
        const std::string text = textOf(file.path());
        std::string error;
        EXPECT_TRUE(dtvservice::parseScenario(text, error)) << file.path() << ": " << error;
        EXPECT_TRUE(fitsTheSchema(text)) << file.path();
        ++count;
    }
    EXPECT_GE(count, 10U);
}
