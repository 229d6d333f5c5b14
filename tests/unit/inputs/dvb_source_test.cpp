// Tests of DVB adapters as inputs. They need no adapter: the test replaces the functions of libdvbv5 that access one.
#include "dvb_source.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <set>

#include "input_name.h"

namespace {

using dtvservice::InputName;

/// The behaviour of the simulated adapter, and a record of the calls.
struct Adapter {
    std::set<std::string> missing;  // devices
    std::set<std::string> failing;  // steps
    std::string lastDevice;
    std::vector<std::pair<unsigned int, std::uint32_t>> stored;
    std::uint32_t system = 0;
    int pid = 0;
    int stream = -1;
    bool isFreed = false;
} adapter;

/// An error without the input's name at its beginning.
std::string behind(const std::string& begin, const std::string& error) {
    return error.compare(0, begin.size(), begin) == 0 ? error.substr(begin.size()) : "(no name) " + error;
}

InputName inputOf(const std::string& text) {
    std::string error;
    const std::optional<InputName> input = dtvservice::parseInput(text, error);
    EXPECT_TRUE(input) << error;
    return input.value_or(InputName());
}

}  // namespace

#if DTV_HAS_DVB
extern "C" {
#include <libdvbv5/dvb-dev.h>
}
#include <libdvbv5/dvb-fe.h>

namespace {

dvb_v5_fe_parms parameters{};
dvb_device device{nullptr, 0, &parameters};
dvb_dev_list listed{};
dvb_logfunc_priv logFunction = nullptr;
void* logPrivate = nullptr;

bool works(const std::string& step) {
    return adapter.failing.count(step) == 0;
}

const char* nameOf(dvb_dev_type type) {
    return type == DVB_DEVICE_FRONTEND ? "frontend" : type == DVB_DEVICE_DEMUX ? "demux" : "dvr";
}

}  // namespace

extern "C" {

dvb_device* dvb_dev_alloc() {
    return &device;
}

void dvb_dev_free(dvb_device*) {
    adapter.isFreed = true;
}

void dvb_dev_set_logpriv(dvb_device*, unsigned, dvb_logfunc_priv function, void* kept) {
    logFunction = function;
    logPrivate = kept;
}

int dvb_dev_find(dvb_device*, dvb_dev_change_t, void*) {
    return works("find") ? 0 : -1;
}

dvb_dev_list* dvb_dev_seek_by_adapter(dvb_device*, unsigned int, unsigned int, dvb_dev_type type) {
    adapter.lastDevice = nameOf(type);
    return adapter.missing.count(nameOf(type)) == 0 ? &listed : nullptr;
}

dvb_open_descriptor* dvb_dev_open(dvb_device*, const char*, int) {
    if (works("open " + adapter.lastDevice)) {
        return reinterpret_cast<dvb_open_descriptor*>(&adapter);
    }
    logFunction(logPrivate, 7, "a word that is no error\n");
    logFunction(logPrivate, 3, "Device or %s busy\n", "resource");
    return nullptr;
}

int dvb_dev_get_fd(dvb_open_descriptor*) {
    return adapter.stream;
}

int dvb_dev_dmx_set_pesfilter(dvb_open_descriptor*, int pid, dmx_pes_type_t, dmx_output_t, int) {
    adapter.pid = pid;
    return works("filter") ? 0 : -1;
}

int dvb_set_compat_delivery_system(dvb_v5_fe_parms*, std::uint32_t system) {
    adapter.system = system;
    return works("system") ? 0 : EINVAL;
}

int dvb_fe_store_parm(dvb_v5_fe_parms*, unsigned command, std::uint32_t value) {
    adapter.stored.emplace_back(command, value);
    return command != DTV_SYMBOL_RATE || works("symbol rate") ? 0 : EINVAL;
}

int dvb_fe_set_parms(dvb_v5_fe_parms*) {
    return works("tune") ? 0 : EINVAL;
}

int dvb_fe_get_stats(dvb_v5_fe_parms*) {
    return 0;
}

int dvb_fe_retrieve_stats(dvb_v5_fe_parms*, unsigned, std::uint32_t* value) {
    *value = works("lock") ? FE_HAS_LOCK : 0;
    return 0;
}
}
#endif

namespace {

constexpr const char* kCable =
    "dvb://2/1?delivery_system=dvbc/annex_a&frequency=346000000&symbol_rate=6900000&modulation=QAM/256";

class AnAdapter : public testing::Test {
protected:
    void SetUp() override {
        if (!DTV_HAS_DVB) {
            GTEST_SKIP() << "this build has no DVB adapters";
        }
        adapter = {};
        EXPECT_EQ(pipe2(ends.data(), O_NONBLOCK | O_CLOEXEC), 0);
        adapter.stream = ends[0];
    }
    ~AnAdapter() override {
        for (const int descriptor : {ends[0], ends[1], wakeUp}) {
            close(descriptor);
        }
    }

    std::unique_ptr<dtvservice::ByteSource> open(const char* input = kCable) {
        return dtvservice::openDvb(inputOf(input), wakeUp, error);
    }
    /// The error if the adapter fails at this step.
    std::string errorOf(const std::string& step) {
        adapter.failing = {step};
        EXPECT_EQ(open(), nullptr);
        EXPECT_TRUE(adapter.isFreed);
        adapter.failing.clear();
        return behind(std::string("cannot open ") + kCable + ": ", error);
    }
    std::string errorWithout(const std::string& deviceName) {
        adapter.missing = {deviceName};
        std::string found = errorOf("");
        adapter.missing.clear();
        return found;
    }
    void wake() const {
        const std::uint64_t one = 1;
        EXPECT_EQ(write(wakeUp, &one, sizeof one), static_cast<ssize_t>(sizeof one));
    }

    std::array<int, 2> ends = {-1, -1};
    int wakeUp = eventfd(0, EFD_CLOEXEC);
    std::string error;
};

}  // namespace

TEST_F(AnAdapter, IsTunedAndGivesTheWholeMultiplex) {
    const auto source = open();
    ASSERT_NE(source, nullptr) << error;
    EXPECT_EQ(adapter.system, 1U) << "SYS_DVBC_ANNEX_A";
    EXPECT_THAT(adapter.stored,
                testing::ElementsAre(testing::Pair(3U, 346000000U), testing::Pair(8U, 6900000U), testing::Pair(4U, 5U)))
        << "frequency, symbol rate, QAM/256";
    EXPECT_EQ(adapter.pid, 0x2000) << "every PID";
    ASSERT_EQ(write(ends[1], "packets", 7), 7);
    std::array<std::uint8_t, 188> bytes{};
    EXPECT_EQ(source->read(bytes.data(), bytes.size()), 7U);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 7), "packets");
}

TEST_F(AnAdapter, EndsReadingOnTheWakeUp) {
    const auto source = open();
    ASSERT_NE(source, nullptr) << error;
    wake();
    std::array<std::uint8_t, 188> bytes{};
    EXPECT_EQ(source->read(bytes.data(), bytes.size()), 0U);
    EXPECT_EQ(source->error(), "");
}

TEST_F(AnAdapter, SaysWhenItGivesNoMorePackets) {
    const auto source = open();
    ASSERT_NE(source, nullptr) << error;
    close(ends[1]);
    std::array<std::uint8_t, 188> bytes{};
    EXPECT_EQ(source->read(bytes.data(), bytes.size()), 0U);
    EXPECT_EQ(source->error(), std::string(kCable) + ": the adapter gives no more packets");
    ends[1] = -1;
}

TEST_F(AnAdapter, NamesTheStepThatFails) {
    EXPECT_EQ(errorWithout("frontend"), "there is no frontend 1 of adapter 2");
    EXPECT_EQ(errorWithout("demux"), "there is no demultiplexer 1 of adapter 2");
    EXPECT_EQ(errorWithout("dvr"), "there is no stream device 1 of adapter 2");
    EXPECT_EQ(errorOf("find"), "cannot look for adapters");
    EXPECT_EQ(errorOf("open frontend"), "cannot open the frontend: Device or resource busy");
    EXPECT_EQ(errorOf("system"), "the frontend does not receive DVBC/ANNEX_A");
    EXPECT_EQ(errorOf("symbol rate"), "symbol_rate is no property of DVBC/ANNEX_A");
    EXPECT_EQ(errorOf("tune"), "cannot tune");
    EXPECT_EQ(errorOf("open demux"), "cannot open the demultiplexer: Device or resource busy");
    EXPECT_EQ(errorOf("filter"), "cannot take the whole multiplex");
    EXPECT_EQ(errorOf("open dvr"), "cannot open the stream device: Device or resource busy");
}

TEST_F(AnAdapter, SaysWhenThereIsNoSignal) {
    EXPECT_EQ(errorOf("lock"), "no signal: the frontend has not locked within five seconds");
}

TEST_F(AnAdapter, MayBeEndedWhileItIsTuned) {
    wake();
    EXPECT_EQ(errorOf("lock"), "ended while it was tuned");
}

TEST_F(AnAdapter, RefusesInvalidProperties) {
    const auto problem = [](const std::string& options) {
        const std::string name = "dvb://0?" + options;
        return behind("input \"" + name + "\": ", dtvservice::checkDvb(inputOf(name)));
    };
    EXPECT_EQ(dtvservice::checkDvb(inputOf(kCable)), "");
    EXPECT_EQ(
        dtvservice::checkDvb(inputOf("dvb://0?delivery_system=DVBS&frequency=1&polarization=horizontal&lnb=universal")),
        "");
    EXPECT_EQ(problem("frequency=1"), "delivery_system and frequency are needed");
    EXPECT_EQ(problem("frequncy=1"), "unknown property \"frequncy\"");
    EXPECT_EQ(problem("frequency=high"), "frequency: \"high\" is not a number");
    EXPECT_EQ(problem("inversion=maybe"), "inversion: \"maybe\" is none of OFF, ON, AUTO");
    EXPECT_EQ(problem("lnb=mine"), "lnb: libdvbv5 knows no \"mine\"");
}

TEST(ABuildWithoutAdapters, RefusesThemByName) {
    if (DTV_HAS_DVB) {
        GTEST_SKIP() << "this build has DVB adapters";
    }
    EXPECT_EQ(dtvservice::checkDvb(inputOf("dvb://0")),
              "input \"dvb://0\": this build has no DVB adapters: libdvbv5 was missing");
}
