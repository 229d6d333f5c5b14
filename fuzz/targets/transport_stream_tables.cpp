// A broadcast on its way into the tables of a multiplex.
#include "broadcast_input.h"
#include "oracles.h"
#include "pes_time.h"
#include "si_database.h"
#include "text/printable.h"

namespace {

/// Asks for all that the database has when something changes, as the service does.
class Listener : public broadcast::SiListener {
    using Database = broadcast::SiDatabase;
    using Section = broadcast::Section;

    void onChannelList(const Database& of) override {
        for (const broadcast::Channel& channel : of.channels()) {
            fuzz::expectPrintable(text::printable(channel.name), "name of a channel");
        }
        of.isIdentified();
    }
    void onPmt(const Database& of, std::uint16_t serviceId, const Section& section, bool) override {
        fuzz::expect(of.pmt(serviceId) == section, "the PMT that has come is not the latest");
        of.signalsHbbTv(serviceId);
    }
    void onEit(const Database& of, std::uint16_t serviceId, const Section&, bool) override { of.eit(serviceId); }
    void onAit(const Database& of, std::uint16_t serviceId, const Section&, bool) override { of.ait(serviceId); }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::run(data, size, {2U << 20U, 2000}, [](fuzz::Input input) {
        Listener listener;
        broadcast::Demux demux;
        broadcast::SiDatabase database(demux, listener);
        constexpr std::uint16_t kVideoOfSample = 0x0101;
        demux.watch(kVideoOfSample, [](broadcast::TsPacket packet) {
            broadcast::ptsOf(packet);
            broadcast::temiTimelinesOf(packet);
        });
        fuzz::BroadcastInput broadcast(demux);
        while (!input.isEmpty()) {
            broadcast.play(input);
        }
        database.otherChannels();
        fuzz::expect(database.channels().size() <= broadcast::kMostServices, "more services than are followed");
        demux.total();
    });
}
