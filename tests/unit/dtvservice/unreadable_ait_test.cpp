// Tests of an AIT that cannot be read.
#include "applications_room.h"
#include "running_set.h"

namespace {

class AnUnreadableAit : public ARunningSet {};

}  // namespace

TEST_F(AnUnreadableAit, IsLoggedOnceForAllItsRepetitions) {
    dtvservice::ApplicationsRoom room(core);
    const broadcast::Section cut = {0x74, 0xF0, 0x01, 0x00};
    for (int time = 0; time < 3; ++time) {
        room.aitChanged(broadcast::Channel(), cut);
    }
    EXPECT_THAT(logged::withoutTraces(),
                testing::ElementsAre(testing::AllOf(
                    testing::Field(&recording::LogLine::function, "tellAitSection"),
                    testing::Field(&recording::LogLine::message, testing::Not(testing::HasSubstr("repeated"))))));
}
