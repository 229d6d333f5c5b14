// Validates the JSON lines of the tools against docs/json.schema.json.
// Threads: one.
// Fails:   with the line, and what is wrong with it.
#pragma once

#include <gtest/gtest.h>

#include <string>

/// Whether each line is an object of the schema, and no key has two types in all lines that the process has validated.
testing::AssertionResult isValidJson(const std::string& lines);
