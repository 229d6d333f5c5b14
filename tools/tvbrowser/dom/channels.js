// Channels and the channel list.

// The ccid of a channel is "ccid:" and its triplet in decimal: it stays the same as long as the broadcast does.
const ccidOf = ({ onid, tsid, sid }) => "ccid:" + onid + "." + tsid + "." + sid;

const sameTriplet = (one, other) =>
    Boolean(one && other) && one.onid === other.onid && one.tsid === other.tsid && one.sid === other.sid;

const channelTypes = { TYPE_TV: 0, TYPE_RADIO: 1, TYPE_OTHER: 2 };
const idTypes = {
    ID_ANALOG: 0,
    ID_DVB_C: 10,
    ID_DVB_S: 11,
    ID_DVB_T: 12,
    ID_DVB_SI_DIRECT: 13,
    ID_DVB_C2: 14,
    ID_DVB_S2: 15,
    ID_DVB_T2: 16,
    ID_ISDB_C: 20,
    ID_ISDB_S: 21,
    ID_ISDB_T: 22,
    ID_ATSC_T: 30,
    ID_IPTV_SDS: 40,
    ID_IPTV_URI: 41,
};

const channelFacts = new PrivateWeakMap(); // Channel -> what it was made of, whatever a page writes into it

class Channel {
    constructor(facts, fields) {
        channelFacts.set(this, facts);
        defineFields(this, fields, true);
    }
}
defineFields(Channel.prototype, channelTypes);
defineFields(Channel.prototype, idTypes);

// The bytes of a text of hexadecimal digits, one character each.
function bytesOfHex(hex) {
    let bytes = "";
    for (let index = 0; index + 1 < hex.length; index += 2) {
        bytes += letterOf(makeNumber("0x" + part(hex, index, index + 2)));
    }
    return bytes;
}

// The hexadecimal digits of a text with one character a byte; null if a character is no byte.
function hexOfBytes(bytes) {
    let hex = "";
    for (let index = 0; index < bytes.length; ++index) {
        const byte = codeAt(bytes, index);
        if (byte > 255) {
            return null;
        }
        hex += (byte < 16 ? "0" : "") + inBase(byte, 16);
    }
    return hex;
}

// A channel as the broadcast describes it.
function channelOf(known) {
    const { onid, tsid, sid, nid, idType, name, type, dsd, majorChannel } = known;
    return new Channel(
        { onid, tsid, sid, idType, dsd: undefined, known },
        {
            channelType: type,
            idType,
            ccid: ccidOf(known),
            tunerID: undefined,
            onid,
            tsid,
            sid,
            nid: nid === null ? undefined : nid,
            name,
            longName: name,
            majorChannel,
            minorChannel: undefined,
            terminalChannel: majorChannel,
            dsd: dsd ? bytesOfHex(dsd) : undefined,
            sourceID: undefined,
            ipBroadcastID: undefined,
            manualBlock: false,
            locked: false,
        }
    );
}

// A channel that no list has: all that is known is what one tunes by.
function bareChannel(facts, ccid) {
    const { idType, onid, tsid, sid, dsd } = facts;
    return new Channel(facts, {
        channelType: undefined,
        idType,
        ccid,
        onid,
        tsid,
        sid,
        name: undefined,
        dsd: dsd === undefined ? undefined : bytesOfHex(dsd),
        manualBlock: false,
        locked: false,
    });
}

// The channels are asked for once, and again after a change of the list. One that has not changed stays the same
// object.
let knownChannels = null;
let channelsByCcid = new PrivateMap();
onSignal("channelsChanged", () => {
    knownChannels = null;
});

function allChannels() {
    if (!knownChannels) {
        const before = channelsByCcid;
        channelsByCcid = new PrivateMap();
        knownChannels = mapped(tryCall("channels", null, []), (known) => {
            const channel = before.get(ccidOf(known));
            const kept = channel && isSameChannel(channelFacts.get(channel).known, known) ? channel : channelOf(known);
            channelsByCcid.set(ccidOf(known), kept);
            return kept;
        });
    }
    return knownChannels;
}

function isSameChannel(one, other) {
    let isSame = true;
    each(one, (name, value) => {
        isSame = isSame && other[name] === value;
    });
    return isSame;
}

// The listed channel of a triplet; a bare one as long as no list has it; null for none.
function channelByTriplet(triplet) {
    if (!triplet) {
        return null;
    }
    allChannels();
    return (
        channelsByCcid.get(ccidOf(triplet)) || bareChannel({ idType: presentedIdType(), ...triplet }, ccidOf(triplet))
    );
}

// How the set receives: as the channels that are known. Before there are any, all kinds are the same to a set, which
// finds the channel by its triplet.
const presentedIdType = () => (allChannels().length > 0 ? channelFacts.get(allChannels()[0]).idType : idTypes.ID_DVB_T);

const presentedChannel = () => channelByTriplet(tryCall("presented", null, null));

class ChannelList extends Collection {
    #channels;

    constructor(channels) {
        super(channels);
        this.#channels = channels;
    }
    #first(matches) {
        return those(this.#channels, (channel) => matches(channelFacts.get(channel)))[0] || null;
    }

    getChannel(channelId) {
        return this.#first((facts) => ccidOf(facts) === channelId);
    }
    getChannelByTriplet(onid, tsid, sid) {
        const wanted = { onid: makeNumber(onid), tsid: makeNumber(tsid), sid: makeNumber(sid) };
        return this.#first((facts) => sameTriplet(facts, wanted));
    }
    // Source identifiers are those of ATSC, which no channel here has.
    getChannelBySourceID() {
        return null;
    }
}

class ChannelConfig extends EventTarget {
    constructor() {
        super(); // see privateCopy()
    }
    get channelList() {
        requireBroadcast();
        return new ChannelList(allChannels());
    }
    get currentChannel() {
        return state.broadcastRelated ? presentedChannel() : null;
    }
}
defineHandlers(ChannelConfig, { ChannelListUpdate: [] });

let channelConfig = null;
function theChannelConfig() {
    channelConfig = channelConfig || new ChannelConfig();
    return channelConfig;
}
function tellListUpdate() {
    if (channelConfig && state.broadcastRelated) {
        fireLater(channelConfig, "ChannelListUpdate");
    }
}

// Null for what cannot be a channel.
function createChannelByDescriptor(dsd, sid) {
    const bytes = hexOfBytes(safeText(dsd));
    return bytes && isNumber16(sid) ? bareChannel({ idType: idTypes.ID_DVB_SI_DIRECT, dsd: bytes, sid }) : null;
}
function createChannel(idType, onid, tsid, sid) {
    if (!isBroadcastIdType(idType) || !isNumber16(onid) || !isNumber16(tsid) || !isNumber16(sid)) {
        return null;
    }
    allChannels();
    const listed = channelsByCcid.get(ccidOf({ onid, tsid, sid }));
    return listed && channelFacts.get(listed).idType === idType ? listed : bareChannel({ idType, onid, tsid, sid });
}

const isNumber16 = (value) => typeof value === "number" && value >= 0 && value <= 0xffff && value % 1 === 0;
const isBroadcastIdType = (idType) => typeof idType === "number" && idType >= 10 && idType <= 16;
