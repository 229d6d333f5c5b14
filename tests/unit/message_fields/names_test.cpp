// The names of fields, and the words of the browser's operations.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <regex>

#include "message_fields.h"

using namespace message_fields;

TEST(EveryField, HasANameInSmallLettersAndAMeaning) {
    const std::regex name("[a-z][a-z0-9]*(_[a-z0-9]+)*");
    for (const Field& field : fields()) {
        EXPECT_TRUE(std::regex_match(field.name, name)) << field.message << ": " << field.name;
        EXPECT_GT(std::string(field.meaning).size(), 3U) << field.message << ": " << field.name;
    }
}

TEST(EveryField, HasANameOfItsOwnInItsMessage) {
    for (const Message& message : messages()) {
        std::map<std::string, int> times;
        for (const Field& field : fieldsOf(message.name)) {
            EXPECT_EQ(++times[field.name], 1) << message.name << ": " << field.name;
        }
    }
}

TEST(EveryField, HasTheFormOfAllFieldsOfItsName) {
    for (const List<Field> list : {fields(), additions()}) {
        for (const Field& field : list) {
            EXPECT_EQ(field.form, findField(field.name)->form) << field.message << ": " << field.name;
        }
    }
}

TEST(AnAddition, IsNoNameOfAMessage) {
    for (const Field& addition : additions()) {
        EXPECT_EQ(findField(addition.name), &addition) << addition.name;
    }
}

TEST(EveryOperation, IsWordedWithKnownNamesAndAKnownMessage) {
    for (const Operation& operation : operations()) {
        for (const Field* const field : fieldsOf(operation, operation.parameters)) {
            EXPECT_NE(field, nullptr) << operation.name << ": " << operation.parameters;
        }
        for (const Field* const field : fieldsOf(operation, operation.results)) {
            EXPECT_NE(field, nullptr) << operation.name << ": " << operation.results;
        }
        const List<Message> all = messages();
        EXPECT_TRUE(operation.message == std::string("none") || std::any_of(all.begin(), all.end(),
                                                                            [&operation](const Message& message) {
                                                                                return operation.message ==
                                                                                       std::string(message.name);
                                                                            }))
            << operation.name << ": " << operation.message;
    }
}

TEST(AnOperation, IsFoundByItsNameAndTheNumberOfItsParameters) {
    EXPECT_EQ(parametersOf("tuneToService", 5)[0]->name, std::string("id_type"));
    EXPECT_EQ(parametersOf("tuneToService", 3)[0]->name, std::string("dsd"));
    EXPECT_TRUE(parametersOf("tuneToService", 4).empty());
    EXPECT_TRUE(parametersOf("noOperation", 1).empty());
}

TEST(AnUnknownName, IsNoField) {
    EXPECT_EQ(findField("eleventh"), nullptr);
    EXPECT_TRUE(fieldsOf("noMessage").empty());
}
