// The DTV service goes and comes back.
#include "connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "eventually.h"
#include "recording_api.h"

namespace {

using dvbshell::Connection;

class AConnection : public testing::Test {
protected:
    /// The next text; looks are rare.
    std::string nextNews() {
        std::optional<std::string> text;
        EXPECT_TRUE(eventually([&] { return (text = connection.news()).has_value(); }));
        return text.value_or("");
    }

    RecordingApi api;
    Connection connection{api};
};

}  // namespace

TEST_F(AConnection, AsksWithALayerThatNobodyFollows) {
    EXPECT_TRUE(connection.isThere());
    connection.followLayer(0xFFFFFFFF);
    EXPECT_TRUE(connection.isThere());
    EXPECT_THAT(api.calls, testing::ElementsAre("stopOSDDetection(4294967295)", "stopOSDDetection(4294967294)"));
}

TEST_F(AConnection, NamesWhatWasLostAndSaysWhenTheServiceIsBack) {
    EXPECT_FALSE(connection.news());
    connection.followLayer(3);
    connection.open("TEMI timeline 1:0");
    connection.open("filter on PID 18");
    connection.open("filter on PID 16");
    connection.close("filter on PID 16");
    api.result = -32;
    EXPECT_EQ(nextNews(), "the DTV service has gone; lost: OSD layer 3, TEMI timeline 1:0, filter on PID 18");
    EXPECT_TRUE(connection.isGone());
    api.result = 0;
    EXPECT_EQ(nextNews(),
              "the DTV service is there again; open again what was lost: OSD layer 3, TEMI timeline 1:0, filter on PID "
              "18");
    EXPECT_FALSE(connection.isGone());
}

TEST_F(AConnection, ForgetsWhatWasClosed) {
    connection.followLayer(3);
    connection.leaveLayer(3);
    connection.leaveLayer(4);
    connection.open("TEMI timeline 1:0");
    connection.open("TEMI timeline 2:0");
    connection.closeAll("TEMI timeline");
    api.result = -1;
    EXPECT_EQ(nextNews(), "the DTV service has gone");
    api.result = 0;
    EXPECT_EQ(nextNews(), "the DTV service is there again");
}

TEST_F(AConnection, WaitsNoLongerThanItMay) {
    api.result = -1;
    EXPECT_FALSE(connection.await(std::chrono::milliseconds(0)));
    EXPECT_TRUE(connection.isGone());
    api.result = 0;
    EXPECT_TRUE(connection.await(std::chrono::hours(1)));
}
