// Tunes that pages of this process have asked for, and their answers.

const channelErrors = {
    noSignal: 1,
    lockedByOther: 2,
    unknownChannel: 5,
    interrupted: 6,
    noChannelList: 10,
    notInStream: 12,
    unidentified: 100,
};

// Asked for and not answered, oldest first: {owner, channel, facts, isTold}. The page knows the outcome of one that is
// told, though the set will still answer it.
let tunes = [];

// Gives the tune, null if the set does not take it.
function askToTune(owner, channel, facts, quiet) {
    const { idType, onid, tsid, sid, dsd } = facts;
    const flags = quiet | 0;
    const tune = { owner, channel, facts, isTold: false };
    append(tunes, tune);
    const isTaken =
        dsd === undefined
            ? tryCall("tune", { idType, onid, tsid, sid, flags }, false)
            : tryCall("tuneByDescriptor", { dsd, sid, flags }, false);
    if (isTaken) {
        return tune;
    }
    tunes = those(tunes, (other) => other !== tune);
    return null;
}

// The owner's tune that it waits for, or null.
function tuneOf(owner) {
    const newest = tunes[tunes.length - 1];
    return tunes.length > 0 && newest.owner === owner && !newest.isTold ? newest : null;
}

const isAnswer = ({ facts }, triplet) =>
    facts.dsd === undefined ? sameTriplet(facts, triplet) : Boolean(triplet) && facts.sid === triplet.sid;

// The tune that an event answers, null if none does. The set answers tunes in their order: those before the answered
// one will not be answered any more.
function answeredTune(started, triplet) {
    for (let index = 0; index < tunes.length; ++index) {
        if (!started || isAnswer(tunes[index], triplet)) {
            const tune = tunes[index];
            tunes = those(tunes, (other, at) => at > index);
            return tune;
        }
    }
    return null;
}

// No tune will be answered any more.
function forgetTunes() {
    tunes = [];
}

// Whether the set's broadcast service has presented something and is not there at this moment.
const isServiceGone = () =>
    tryCall("presented", null, null) !== null && !tryCall("serviceState", null, { connected: false }).connected;

// Why a tune failed: there was nobody to carry it out, or the channel is known but cannot be received, or its transport
// stream does not have it, or nobody knows it.
function failureOf(facts) {
    if (isServiceGone()) {
        return channelErrors.unidentified;
    }
    let errorState = channelErrors.unknownChannel;
    const channels = allChannels();
    for (let index = 0; index < channels.length; ++index) {
        const other = channelFacts.get(channels[index]);
        const isSameStream =
            facts.dsd === undefined
                ? other.onid === facts.onid && other.tsid === facts.tsid
                : other.known.dsd === facts.dsd;
        if (isSameStream && other.sid === facts.sid) {
            return channelErrors.noSignal;
        }
        errorState = isSameStream ? channelErrors.notInStream : errorState;
    }
    return errorState;
}
