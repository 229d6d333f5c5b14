// Following a tune: what tells that it is done, that it failed, or that no answer came.
// Threads: one.
// Blocks:  until the answer, or the end of the time.
// Fails:   with a line that names the wanted channel and the one that stays.
#pragma once

#include <functional>
#include <string>

#include "session.h"

namespace dvbshell {

/// Whether an event belongs to the channel. While the broadcast has not announced its network, any original_network_id
/// matches.
bool isOfChannel(const Event& event, const Triplet& channel);

struct TuneGoal {
    std::string what;  ///< "1:1025:28106"
    std::function<bool(const Event&)> isReached;
};

TuneGoal goalOf(const Triplet& channel);

/// Prints events until the goal is reached, and on the command line until `end`. Returns an exit code.
int followTune(Session& session, const TuneGoal& goal, Clock::time_point end);

constexpr int kIdTypeDvbTerrestrial = 12;  ///< OIPF DAE, Channel.ID_DVB_T

/// Sends the tune of a triplet.
void startTune(Session& session, int idType, const Triplet& channel);

constexpr std::chrono::seconds kLongestTune{5};

}  // namespace dvbshell
