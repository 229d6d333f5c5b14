// The two trace lines in the AIT units.
#include "trace_scope.h"

#include <stdexcept>

#include "ait_fixture.h"

using velmora::dvbservice::TraceScope;

namespace {

std::vector<std::string> texts() {
    std::vector<std::string> all;
    for (const recording::LogLine& line : recording::log()) {
        EXPECT_EQ(line.level, blog::kTrace);
        all.push_back(line.text);
    }
    return all;
}

}  // namespace

TEST(ATraceScope, LogsItsFirstLineNumberTwice) {
    recording::reset();
    {
        const TraceScope scope("operation", "folder/file.cpp", 77);
        EXPECT_THAT(texts(), testing::ElementsAre("[TRACE -> operation(IN)] file.cpp:77:operation() \n"));
    }
    EXPECT_THAT(texts(), testing::ElementsAre("[TRACE -> operation(IN)] file.cpp:77:operation() \n",
                                              "[TRACE <- operation(OUT)] file.cpp:77:operation() \n"));
}

TEST(ATraceScope, LogsTheExitOfAnOperationThatThrows) {
    recording::reset();
    EXPECT_THROW(
        {
            const TraceScope scope("operation", "file.cpp", 1);
            throw std::runtime_error("passing");
        },
        std::runtime_error);
    EXPECT_THAT(texts(), testing::SizeIs(2));
}

TEST(ATraceScope, IsMadeWithThePlaceWhereItStands) {
    recording::reset();
    const int line = __LINE__ + 1;
    { TRACE_SCOPE(); }
    const std::string place = "trace_scope_test.cpp:" + std::to_string(line) + ":TestBody() \n";
    EXPECT_THAT(texts(), testing::ElementsAre("[TRACE -> TestBody(IN)] " + place, "[TRACE <- TestBody(OUT)] " + place));
}

TEST(ATraceScope, FormatsNoLineWhenTracesAreOff) {
    recording::reset();
    recording::setLogThreshold(4999);
    { const TraceScope scope("operation", "file.cpp", 1); }
    EXPECT_EQ(recording::levelChecks(), 2U);
    EXPECT_EQ(recording::formattedLines(), 0U);
}
