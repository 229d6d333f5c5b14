// The trace of an operation: two lines, however the operation ends.
#include "trace_scope.h"

#include <stdexcept>

#include "service_fixture.h"

namespace {

std::vector<std::string> texts() {
    std::vector<std::string> all;
    for (const recording::LogLine& line : recording::log()) {
        EXPECT_EQ(line.level, 0x5F1388U);
        all.push_back(line.text);
    }
    return all;
}

}  // namespace

TEST(ATraceScope, WritesFunctionFileAndLineAtBothEnds) {
    recording::reset();
    {
        const velmora::dvbservice::TraceScope scope("operation", "/some/folder/unit.cpp", 77);
        EXPECT_THAT(texts(), testing::ElementsAre("[TRACE -> operation(IN)] unit.cpp:77:operation() \n"));
    }
    EXPECT_THAT(texts(), testing::ElementsAre("[TRACE -> operation(IN)] unit.cpp:77:operation() \n",
                                              "[TRACE <- operation(OUT)] unit.cpp:77:operation() \n"));
}

TEST(ATraceScope, LogsTheExitOnAnException) {
    recording::reset();
    try {
        const velmora::dvbservice::TraceScope scope("operation", "unit.cpp", 1);
        throw std::runtime_error("out");
    } catch (const std::runtime_error&) {
        EXPECT_EQ(texts().size(), 2U);
    }
}

TEST(ATraceScope, AsksForItsLevelAtEachEnd) {
    recording::reset();
    recording::setLogThreshold(0x1387);
    {
        const velmora::dvbservice::TraceScope scope("operation", "unit.cpp", 1);
        recording::setLogThreshold(0x1388);
    }
    EXPECT_THAT(texts(), testing::ElementsAre("[TRACE <- operation(OUT)] unit.cpp:1:operation() \n"));
    EXPECT_EQ(recording::levelChecks(), 2U);
    EXPECT_EQ(recording::formattedLines(), 1U);
}
