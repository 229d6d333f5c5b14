// Filter records, the registry of clients, session names.
#include <unistd.h>

#include <algorithm>
#include <locale>
#include <unordered_set>

#include "filter_fixture.h"
#include "session_name.h"

TEST_F(AFilter, HoldsWhatItWasBuiltFrom) {
    const auto record = FilterParameter::create(&client, "name", 0x1FFF, match, bits, 3);
    EXPECT_EQ(record->sessionName(), "name");
    EXPECT_EQ(record->pid(), 0x1FFFU);
    EXPECT_EQ(record->client(), &client);
    EXPECT_THAT(record->mask(), testing::ElementsAre(0x42, 0x00, 0x01));
    EXPECT_THAT(record->mask_bits(), testing::ElementsAre(0xFF, 0x00, 0xFF));
    EXPECT_EQ(record->shared_from_this(), record);
    EXPECT_EQ(FilterParameterTestAccess::state(*record), 0x01U);
    EXPECT_EQ(FilterParameterTestAccess::dataSlot(*record), "");
}

TEST_F(AFilter, HasEmptyPatternsWithoutALength) {
    for (const int length : {0, -1, -100}) {
        const auto record = FilterParameter::create(&client, "name", 1, nullptr, nullptr, length);
        EXPECT_TRUE(record->mask().empty());
        EXPECT_TRUE(record->mask_bits().empty());
    }
}

TEST_F(AFilter, KeepsItsStateBitsAsReported) {
    const auto failedFirst = FilterParameter::create(&client, "a", 1, nullptr, nullptr, 0);
    failedFirst->setFailed();
    EXPECT_EQ(FilterParameterTestAccess::state(*failedFirst), 0x41U);
    failedFirst->closed();
    EXPECT_EQ(FilterParameterTestAccess::state(*failedFirst), 0x20U);
    const auto closedFirst = FilterParameter::create(&client, "b", 1, nullptr, nullptr, 0);
    closedFirst->closed();
    closedFirst->setFailed();
    EXPECT_EQ(FilterParameterTestAccess::state(*closedFirst), 0x60U);
}

TEST_F(AFilter, IsSavedOnceAndFoundByName) {
    const auto first = FilterParameter::create(&client, "same", 1, nullptr, nullptr, 0);
    const auto second = FilterParameter::create(&client, "same", 2, nullptr, nullptr, 0);
    EXPECT_EQ(service->saveFilter(first), 0);
    EXPECT_EQ(service->saveFilter(first), 0);
    EXPECT_EQ(service->saveFilter(second), 0);
    EXPECT_EQ(recordOf("same"), first);
    service->removeFilter(first);
    EXPECT_EQ(recordOf("same"), second) << "the first was there once";
    EXPECT_FALSE(recordOf("sam"));
    EXPECT_FALSE(recordOf(std::string("same\0", 5)));
}

TEST_F(AFilter, IsNotRemovedTwice) {
    const auto record = FilterParameter::create(&client, "name", 77, nullptr, nullptr, 0);
    recording::reset();
    service->removeFilter(record);
    EXPECT_THAT(lines(),
                testing::ElementsAre(logged::tagged(kFailure, kTag, "browser_dvb_service_filters.cpp", "removeFilter",
                                                    "Unable to remove filter: pam: " + pointerText(record.get()) +
                                                        " client:" + pointerText(&client) + ", pid: 77 \n")));
}

TEST_F(AFilter, IsLoggedWithItsUncutPidWhenUnknown) {
    service->removeFilter(FilterParameter::create(nullptr, "name", 65536 + 77, nullptr, nullptr, 0));
    EXPECT_THAT(lines().at(0).message, testing::EndsWith(" client:(nil), pid: 65613 \n"));
}

TEST_F(AFilter, KeepsItsClientRegistered) {
    EXPECT_TRUE(service->registerClient(&client));
    EXPECT_TRUE(service->registerClient(&client));
    EXPECT_TRUE(service->isRegistered(&client));
    const auto record = FilterParameter::create(&client, "name", 1, nullptr, nullptr, 0);
    service->saveFilter(record);
    EXPECT_FALSE(service->unRegisterClient(&client)) << "it owns a filter";
    EXPECT_TRUE(service->isRegistered(&client));
    service->removeFilter(record);
    EXPECT_TRUE(service->unRegisterClient(&client));
    EXPECT_FALSE(service->isRegistered(&client)) << "it was registered once";
    EXPECT_FALSE(service->unRegisterClient(&client));
}

TEST(ASessionName, IsThePidAndTheUuidInNativeOrder) {
    const std::uint8_t uuid[16] = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF,
                                   0x0A, 0x1B, 0x2C, 0x3D, 0x4E, 0x5F, 0x60, 0x71};
    const std::string ofUuid = "67452301-AB89-EFCD-0A1B-2C3D4E5F6071";
    EXPECT_EQ(velmora::dvbservice::formatSessionName(0x1234, uuid), "00001234-" + ofUuid);
    EXPECT_EQ(velmora::dvbservice::formatSessionName(0x7FEDCBA9, uuid), "7FEDCBA9-" + ofUuid);
}

TEST(ASessionName, IsTheSameWhateverTheBrowsersLocale) {
    class Grouping : public std::numpunct<char> {
        char do_thousands_sep() const override { return ','; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::uint8_t uuid[16] = {1, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 10, 27, 44, 61, 78, 95, 96, 113};
    const std::string name = velmora::dvbservice::formatSessionName(0x1234567, uuid);
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    EXPECT_EQ(velmora::dvbservice::formatSessionName(0x1234567, uuid), name);
    EXPECT_EQ(name.size(), 45U);
    std::locale::global(before);
}

TEST_F(AFilter, EndsTheProcessOnAnEmptyRecord) {
    service->saveFilter({});
    EXPECT_DEATH(service->findFilterParameterBySessionName("any"), "px != 0");
}

TEST_F(AFilter, GetsASessionNameThatStartsWithItsProcess) {
    char process[16];
    std::snprintf(process, sizeof process, "%08X-", static_cast<unsigned int>(getpid()));
    const std::string name = service->generateSessionName();
    EXPECT_EQ(name.size(), 45U);
    EXPECT_EQ(name.substr(0, 9), process);
    EXPECT_EQ(name.find_first_not_of("0123456789ABCDEF-"), std::string::npos);
    for (const std::size_t hyphen : {8U, 17U, 22U, 27U, 32U}) {
        EXPECT_EQ(name[hyphen], '-');
    }
    EXPECT_EQ(std::count(name.begin(), name.end(), '-'), 5);
}

TEST_F(AFilter, NeverGetsASessionNameTwice) {
    constexpr std::size_t kNames = 1000000;
    std::unordered_set<std::string> names;
    for (std::size_t count = 0; count < kNames; ++count) {
        names.insert(service->generateSessionName());
    }
    EXPECT_EQ(names.size(), kNames);
}
