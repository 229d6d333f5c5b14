// Tunes and reads through libdvbv5.
#include "dvb_source.h"

#include <fcntl.h>
#include <libdvbv5/dvb-fe.h>
#include <libdvbv5/dvb-sat.h>
#include <libdvbv5/dvb-v5-std.h>
#include <strings.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <optional>
#include <vector>

// This header lacks extern "C", unlike the library's others.
extern "C" {
#include <libdvbv5/dvb-dev.h>
}

#include "descriptor_wait.h"
#include "repeated_messages.h"
#include "service_log.h"

namespace dtvservice {

namespace {

constexpr const char* kLnb = "lnb";
constexpr int kNoLnb = -1;

struct Property {
    unsigned int command;
    std::uint32_t value;
};

/// The parameters of a tune.
struct Tuning {
    std::uint32_t system = SYS_UNDEFINED;
    std::vector<Property> properties;
    int lnb = kNoLnb;
};

/// The property with this name, upper or lower case; 0 if an input has no such property.
unsigned int commandOf(const std::string& name) {
    for (unsigned int command = DTV_FREQUENCY; command <= DTV_LNA; ++command) {
        const char* const known = dvb_cmd_name(static_cast<int>(command));
        if (known != nullptr && strcasecmp(known, name.c_str()) == 0) {
            return command;
        }
    }
    return strcasecmp(name.c_str(), "polarization") == 0 ? DTV_POLARIZATION : 0;
}

/// Reads a property's value: a name if its values have names, else a number.
std::optional<std::uint32_t> valueOf(unsigned int command, const std::string& text, std::string& error) {
    const char* const* const names = dvb_attr_names(static_cast<int>(command));
    std::string known;
    for (std::uint32_t value = 0; names != nullptr && names[value] != nullptr; ++value) {
        if (strcasecmp(names[value], text.c_str()) == 0) {
            return value;
        }
        known += std::string(known.empty() ? "" : ", ") + names[value];
    }
    std::uint32_t number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (names != nullptr) {
        error = "\"" + text + "\" is none of " + known;
    } else if (failure == std::errc() && end == text.data() + text.size()) {
        return number;
    } else {
        error = "\"" + text + "\" is not a number";
    }
    return std::nullopt;
}

bool readProperty(const InputName::Option& option, Tuning& tuning, std::string& error) {
    if (option.name == kLnb) {
        tuning.lnb = dvb_sat_search_lnb(option.value.c_str());
        error = tuning.lnb < 0 ? "lnb: libdvbv5 knows no \"" + option.value + "\"" : "";
        return tuning.lnb >= 0;
    }
    const unsigned int command = commandOf(option.name);
    if (command == 0) {
        error = "unknown property \"" + option.name + "\"";
        return false;
    }
    const std::optional<std::uint32_t> value = valueOf(command, option.value, error);
    if (!value) {
        error = option.name + ": " + error;
        return false;
    }
    if (command == DTV_DELIVERY_SYSTEM) {
        tuning.system = *value;
    } else {
        tuning.properties.push_back({command, *value});
    }
    return true;
}

std::string nameOf(unsigned int command) {
    std::string name = dvb_cmd_name(static_cast<int>(command));
    for (char& letter : name) {
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    }
    return name;
}

std::string systemName(std::uint32_t system) {
    return dvb_attr_names(DTV_DELIVERY_SYSTEM)[system];
}

bool store(dvb_v5_fe_parms* parameters, const Tuning& tuning, std::string& error) {
    for (const Property& property : tuning.properties) {
        if (dvb_fe_store_parm(parameters, property.command, property.value) != 0) {
            error = nameOf(property.command) + " is no property of " + systemName(tuning.system);
            return false;
        }
    }
    return true;
}

std::optional<Tuning> readTuning(const InputName& input, std::string& error) {
    Tuning tuning;
    bool hasFrequency = false;
    for (const InputName::Option& option : input.options) {
        if (!readProperty(option, tuning, error)) {
            return std::nullopt;
        }
        hasFrequency = hasFrequency || commandOf(option.name) == DTV_FREQUENCY;
    }
    if (tuning.system == SYS_UNDEFINED || !hasFrequency) {
        error = "delivery_system and frequency are needed";
        return std::nullopt;
    }
    return tuning;
}

/// Keeps the latest error that libdvbv5 has logged.
void keepError(void* kept, int level, const char* format, ...) {
    constexpr int kError = 3;  // syslog's LOG_ERR
    if (level > kError) {
        return;
    }
    char text[256];
    va_list values;
    va_start(values, format);
    std::vsnprintf(text, sizeof text, format, values);
    va_end(values);
    text[std::strcspn(text, "\n")] = '\0';
    *static_cast<std::string*>(kept) = text;
}

class Adapter final : public ByteSource {
public:
    Adapter(const InputName& newInput, int newWakeUp) : input(newInput), wakeUp(newWakeUp), devices(dvb_dev_alloc()) {
        dvb_dev_set_logpriv(devices, 0, keepError, &libraryError);
    }
    Adapter(const Adapter&) = delete;
    Adapter& operator=(const Adapter&) = delete;
    ~Adapter() override { dvb_dev_free(devices); }

    bool open(const Tuning& tuning, std::string& error) {
        if (dvb_dev_find(devices, nullptr, nullptr) < 0) {
            return fail("cannot look for adapters", error);
        }
        return openFrontend(error) && tune(tuning, error) && waitForLock(error) && openStream(error);
    }

    std::size_t read(std::uint8_t* bytes, std::size_t capacity) override {
        while (waitFor(stream, wakeUp)) {
            const ssize_t count = ::read(stream, bytes, capacity);
            if (count >= 0) {
                problem = count == 0 ? input.text + ": the adapter gives no more packets" : problem;
                return static_cast<std::size_t>(count);
            }
            if (errno == EOVERFLOW) {
                if (const auto line = messages.tell("packets came faster than they were read")) {
                    BLOG_TAGGED(blog::kUnsupported, "%s: %s\n", input.text.c_str(), line->c_str());
                }
            } else if (errno != EINTR && errno != EAGAIN) {
                problem = input.text + ": " + std::strerror(errno);
                return 0;
            }
        }
        return 0;
    }

private:
    /// Returns false, and sets the error to the failed step and the library's own message.
    bool fail(const std::string& step, std::string& error) const {
        error = step + (libraryError.empty() ? "" : ": " + libraryError);
        return false;
    }

    dvb_open_descriptor* openDevice(dvb_dev_type type, const char* name, int flags, std::string& error) {
        const dvb_dev_list* const device = dvb_dev_seek_by_adapter(devices, input.adapter, input.frontend, type);
        if (device == nullptr) {
            error = "there is no " + std::string(name) + " " + std::to_string(input.frontend) + " of adapter " +
                    std::to_string(input.adapter);
            return nullptr;
        }
        dvb_open_descriptor* const opened = dvb_dev_open(devices, device->sysname, flags);
        if (opened == nullptr) {
            fail("cannot open the " + std::string(name), error);
        }
        return opened;
    }

    bool openFrontend(std::string& error) {
        return openDevice(DVB_DEVICE_FRONTEND, "frontend", O_RDWR, error) != nullptr;
    }

    bool tune(const Tuning& tuning, std::string& error) {
        dvb_v5_fe_parms* const parameters = devices->fe_parms;
        if (dvb_set_compat_delivery_system(parameters, tuning.system) != 0) {
            return fail("the frontend does not receive " + systemName(tuning.system), error);
        }
        if (!store(parameters, tuning, error)) {
            return false;
        }
        parameters->lnb = tuning.lnb == kNoLnb ? nullptr : dvb_sat_get_lnb(tuning.lnb);
        return dvb_fe_set_parms(parameters) == 0 || fail("cannot tune", error);
    }

    bool waitForLock(std::string& error) {
        constexpr std::chrono::seconds kLongest{5};
        constexpr int kBetweenLooks = 100;  // milliseconds
        const auto end = std::chrono::steady_clock::now() + kLongest;
        do {
            std::uint32_t status = 0;
            if (dvb_fe_get_stats(devices->fe_parms) == 0 &&
                dvb_fe_retrieve_stats(devices->fe_parms, DTV_STATUS, &status) == 0 && (status & FE_HAS_LOCK) != 0) {
                return true;
            }
            constexpr int kNothing = -1;
            if (!waitFor(kNothing, wakeUp, kBetweenLooks)) {
                return fail("ended while it was tuned", error);
            }
        } while (std::chrono::steady_clock::now() < end);
        error = "no signal: the frontend has not locked within five seconds";
        return false;
    }

    bool openStream(std::string& error) {
        constexpr int kEveryPid = 0x2000;
        constexpr int kBuffer = 4 * 1024 * 1024;  // half a second of a full satellite transponder
        dvb_open_descriptor* const demux = openDevice(DVB_DEVICE_DEMUX, "demultiplexer", O_RDWR, error);
        if (demux == nullptr) {
            return false;
        }
        if (dvb_dev_dmx_set_pesfilter(demux, kEveryPid, DMX_PES_OTHER, DMX_OUT_TS_TAP, kBuffer) != 0) {
            return fail("cannot take the whole multiplex", error);
        }
        dvb_open_descriptor* const packets = openDevice(DVB_DEVICE_DVR, "stream device", O_RDONLY | O_NONBLOCK, error);
        stream = packets == nullptr ? -1 : dvb_dev_get_fd(packets);
        return stream >= 0;
    }

    InputName input;
    int wakeUp;
    std::string libraryError;
    RepeatedMessages messages;
    dvb_device* devices;  // freeing it closes all opened devices
    int stream = -1;
};

}  // namespace

std::string checkDvb(const InputName& input) {
    std::string error;
    return readTuning(input, error) ? std::string() : "input \"" + input.text + "\": " + error;
}

std::unique_ptr<ByteSource> openDvb(const InputName& input, int wakeUp, std::string& error) {
    std::string problem;
    const std::optional<Tuning> tuning = readTuning(input, problem);
    if (tuning) {
        auto adapter = std::make_unique<Adapter>(input, wakeUp);
        if (adapter->open(*tuning, problem)) {
            return adapter;
        }
    }
    error = "cannot open " + input.text + ": " + problem;
    return nullptr;
}

}  // namespace dtvservice
