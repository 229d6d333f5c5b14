// video/broadcast: the broadcast under control of the page. It has four states:
//
//   unrealized --bindToCurrentChannel, setChannel--> connecting --the channel is there--> presenting
//   connecting, presenting --stop--> stopped --bindToCurrentChannel, setChannel--> connecting
//   any --release, setChannel(null), a failed tune--> unrealized
//
// One object of a page controls the broadcast at a time.

const playStates = { unrealized: 0, connecting: 1, presenting: 2, stopped: 3 };
const channelErrors = {
    notSupported: 0,
    noSignal: 1,
    lockedByOther: 2,
    unknownChannel: 5,
    interrupted: 6,
    noChannelList: 10,
    notInStream: 12,
    unidentified: 100,
};

let controlling = null; // the object that is not unrealized
let tunes = []; // asked for and not answered, oldest first: {owner, channel, facts}

class VideoBroadcast {
    static events = {
        PlayStateChange: ["state", "error"],
        ChannelChangeSucceeded: ["channel"],
        ChannelChangeError: ["channel", "errorState"],
        FullScreenChange: [],
        focus: [],
        blur: [],
        ProgrammesChanged: [],
        ComponentChanged: ["componentType"],
        SelectedComponentChanged: ["componentType"],
    };
    static end(object) {
        object.release();
    }

    #element;
    #playState = playStates.unrealized;
    #channel = null;
    #fullScreen = false;
    #volume = 100;

    constructor(element) {
        this.#element = element;
    }

    get playState() {
        return this.#playState;
    }
    get currentChannel() {
        return state.broadcastRelated ? this.#channel : null;
    }

    bindToCurrentChannel() {
        requireBroadcast();
        if (this.#playState === playStates.connecting || this.#playState === playStates.presenting) {
            return this.currentChannel;
        }
        if (!this.#takeControl()) {
            this.#tell("PlayStateChange", { state: this.#playState, error: channelErrors.lockedByOther });
            return null;
        }
        this.#channel = presentedChannel();
        this.#enter(playStates.connecting);
        later(() => this.#presentIfKnown());
        return this.currentChannel;
    }

    setChannel(channel, trickplay, contentAccessDescriptorUrl, quiet) {
        const facts = channelFacts.get(channel);
        if (channel === null) {
            this.#leaveBroadcast();
        } else if (!facts) {
            this.#refuse(channel, channelErrors.unknownChannel);
        } else if (!isBroadcastIdType(facts.idType)) {
            this.#refuse(channel, channelErrors.notSupported);
        } else if (!this.#takeControl()) {
            this.#refuse(channel, channelErrors.lockedByOther);
        } else {
            this.#tune(channel, facts, quiet);
        }
    }
    nextChannel() {
        this.#step(1);
    }
    prevChannel() {
        this.#step(-1);
    }

    stop() {
        if (this.#playState === playStates.connecting || this.#playState === playStates.presenting) {
            this.#enter(playStates.stopped);
        }
    }
    release() {
        if (this.#playState === playStates.unrealized) {
            return;
        }
        this.#giveUp();
    }

    getChannelConfig() {
        requireBroadcast();
        return theChannelConfig();
    }
    createChannelObject(idType, ...values) {
        return createChannel(idType, values);
    }

    get fullScreen() {
        return this.#fullScreen;
    }
    setFullScreen(fullScreen) {
        if (this.#fullScreen !== Boolean(fullScreen)) {
            this.#fullScreen = Boolean(fullScreen);
            this.#tell("FullScreenChange");
        }
    }
    get width() {
        return this.#fullScreen ? window.innerWidth : Math.round(boxOf(this.#element).width);
    }
    set width(width) {
        setSize(this.#element, "width", width);
    }
    get height() {
        return this.#fullScreen ? window.innerHeight : Math.round(boxOf(this.#element).height);
    }
    set height(height) {
        setSize(this.#element, "height", height);
    }

    getVolume() {
        return this.#volume;
    }
    setVolume(volume) {
        const wanted = makeNumber(volume);
        if (!(wanted >= 0 && wanted <= 100)) {
            return false;
        }
        this.#volume = wanted;
        return true;
    }

    // Called for the object in control:

    static channelChanged(object, started, triplet) {
        object.#channelChanged(started, triplet);
    }
    static serviceChanged(object, connected) {
        object.#serviceChanged(connected);
    }
    static tell(object, event, fields) {
        object.#tell(event, fields);
    }

    #tell(event, fields) {
        fireLater(this.#element, event, fields);
    }

    #refuse(channel, errorState) {
        this.#tell("ChannelChangeError", { channel, errorState });
    }

    // False if another object of the page is in control. One that has left the page is not any more.
    #takeControl() {
        if (controlling && controlling !== this) {
            if (isAttached(controlling.#element)) {
                return false;
            }
            controlling.release();
        }
        controlling = this;
        return true;
    }

    #enter(playState, error) {
        if (this.#playState !== playState) {
            this.#playState = playState;
            this.#tell("PlayStateChange", { state: playState, error });
        }
    }

    #giveUp(error) {
        this.#channel = null;
        controlling = null;
        this.#enter(playStates.unrealized, error);
    }

    #leaveBroadcast() {
        if (controlling && controlling !== this) {
            controlling.release();
        }
        this.release();
        state.broadcastRelated = false;
        tryCall("becomeIndependent", null, false);
        this.#tell("ChannelChangeSucceeded", { channel: null });
    }

    #tune(channel, facts, quiet) {
        const unanswered = tunes[tunes.length - 1];
        if (unanswered && unanswered.owner === this && !unanswered.told) {
            unanswered.told = true;
            this.#refuse(unanswered.channel, channelErrors.interrupted);
        }
        const tune = { owner: this, channel, facts, told: false };
        append(tunes, tune);
        this.#channel = channel;
        this.#enter(playStates.connecting);
        if (!askToTune(facts, quiet)) {
            tunes = those(tunes, (other) => other !== tune);
            this.#fail(tune, channelErrors.unidentified);
        }
    }

    #step(by) {
        requireBroadcast();
        const channels = allChannels();
        if (this.#playState === playStates.unrealized || channels.length === 0) {
            this.#refuse(null, channelErrors.noChannelList);
            return;
        }
        let at = by > 0 ? -1 : channels.length;
        for (let index = 0; index < channels.length; ++index) {
            if (sameTriplet(channelFacts.get(channels[index]), channelFacts.get(this.#channel))) {
                at = index;
            }
        }
        this.setChannel(channels[(at + by + channels.length) % channels.length]);
    }

    #fail(tune, errorState) {
        this.#refuse(tune.channel, errorState);
        this.#giveUp(errorState);
    }

    // A channel is presented: by this object's tune, or because the set changed to it.
    #channelChanged(started, triplet) {
        const tune = answeredTune(started, triplet);
        const waiting = tunes.length > 0 && tunes[tunes.length - 1].owner === this;
        if (tune ? tune.owner !== this || tune.told : !started || (waiting && !this.#interrupt())) {
            return;
        }
        if (!started) {
            this.#fail(tune, failureOf(tune.facts));
            return;
        }
        const isNew = tune !== null || !sameTriplet(channelFacts.get(this.#channel), triplet);
        this.#channel = channelByTriplet(triplet);
        if (isNew) {
            this.#follow(tune);
        } else {
            this.#presentIfKnown();
        }
    }

    #follow(tune) {
        if (this.#playState === playStates.presenting) {
            this.#enter(playStates.connecting);
        }
        this.#tell("ChannelChangeSucceeded", { channel: tune && tune.facts.dsd ? this.#channel : (tune || { channel: this.#channel }).channel });
        this.#presentIfKnown();
    }

    // The set changes the channel while a tune of this object waits for its answer.
    #interrupt() {
        const tune = tunes[tunes.length - 1];
        tune.told = true;
        this.#refuse(tune.channel, channelErrors.interrupted);
        return true;
    }

    #presentIfKnown() {
        const tuning = tunes.length > 0 && tunes[tunes.length - 1].owner === this && !tunes[tunes.length - 1].told;
        if (this.#playState === playStates.connecting && !tuning && this.#channel) {
            this.#enter(playStates.presenting);
        }
    }

    // Without the set's broadcast service there is nothing to present; it comes back by itself.
    #serviceChanged(connected) {
        const tune = tunes[tunes.length - 1];
        if (connected) {
            this.#channel = this.#channel && presentedChannel();
            this.#presentIfKnown();
        } else if (tune && tune.owner === this && !tune.told) {
            this.#fail(tune, channelErrors.unidentified);
        } else if (this.#playState === playStates.presenting) {
            this.#enter(playStates.connecting, channelErrors.unidentified);
        }
    }
}

defineType(["video/broadcast"], VideoBroadcast);

const setStyle = uncurry(CSSStyleDeclaration.prototype.setProperty);
const styleOf = uncurry(getOwnPropertyDescriptor(HTMLElement.prototype, "style").get);

function setSize(element, side, pixels) {
    setStyle(styleOf(element), side, makeNumber(pixels) + "px");
}

function askToTune({ idType, onid, tsid, sid, dsd }, quiet) {
    const flags = quiet | 0;
    return dsd === undefined
        ? tryCall("tune", { idType, onid, tsid, sid, flags }, false)
        : tryCall("tuneByDescriptor", { dsd, sid, flags }, false);
}

const isAnswered = ({ facts }, triplet) =>
    facts.dsd === undefined ? sameTriplet(facts, triplet) : facts.sid === triplet.sid;

// The tune that an event answers, null if none does. Tunes are answered in their order; one before the answered one
// will not be answered any more.
function answeredTune(started, triplet) {
    for (let index = 0; index < tunes.length; ++index) {
        if (!started || isAnswered(tunes[index], triplet)) {
            const tune = tunes[index];
            tunes = those(tunes, (other, at) => at > index);
            return tune;
        }
    }
    return null;
}

// Why a tune failed: the service is there but cannot be received, its transport stream does not have it, or nobody
// knows it.
function failureOf(facts) {
    let errorState = channelErrors.unknownChannel;
    const channels = allChannels();
    for (let index = 0; index < channels.length; ++index) {
        const other = channelFacts.get(channels[index]);
        if (sameTriplet(facts, other)) {
            return channelErrors.noSignal;
        }
        const inStream = facts.dsd === undefined ? other.onid === facts.onid && other.tsid === facts.tsid : other.dsd === facts.dsd;
        errorState = inStream ? channelErrors.notInStream : errorState;
    }
    return errorState;
}

onSignal("channelChanged", ({ started, channel }) => {
    if (controlling) {
        VideoBroadcast.channelChanged(controlling, started, channel);
    } else {
        answeredTune(started, channel);
    }
});
onSignal("service", ({ connected }) => {
    if (controlling) {
        VideoBroadcast.serviceChanged(controlling, connected);
    }
    tunes = connected ? tunes : [];
});

// What happens to the presented service is told to the object in control.
function tellControlling(event, fields) {
    if (controlling && state.broadcastRelated) {
        VideoBroadcast.tell(controlling, event, fields);
    }
}
