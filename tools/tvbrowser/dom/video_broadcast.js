// video/broadcast: the broadcast in the hands of the page. broadcast_control.js has its states.

class VideoBroadcast {
    static events = {
        PlayStateChange: ["state", "error"],
        ChannelChangeSucceeded: ["channel"],
        ChannelChangeError: ["channel", "errorState"],
        FullScreenChange: [],
        ProgrammesChanged: [],
        ComponentChanged: ["componentType"],
        SelectedComponentChanged: ["componentType"],
        ParentalRatingChange: ["contentID", "ratings", "DRMSystemID", "blocked"],
        ParentalRatingError: ["contentID", "ratings", "DRMSystemID"],
        DRMRightsError: ["errorState", "contentID", "DRMSystemID", "rightsIssuerURL"],
    };
    static end(object) {
        object.release();
    }

    #control;
    #fullScreen = false;

    constructor(element) {
        this.#control = new BroadcastControl(element);
    }

    get playState() {
        return this.#control.playState;
    }
    get currentChannel() {
        return state.broadcastRelated ? this.#control.channel : null;
    }

    bindToCurrentChannel() {
        requireBroadcast();
        this.#control.bind();
        return this.currentChannel;
    }
    // Null leaves the broadcast: the application is broadcast-independent from then on.
    setChannel(channel, trickplay, contentAccessDescriptorUrl, quiet) {
        const facts = channelFacts.get(channel);
        if (facts) {
            this.#control.tune(channel, facts, quiet);
        } else if (channel === null) {
            this.#leaveBroadcast();
        } else {
            this.#control.refuse(channel, channelErrors.unknownChannel);
        }
    }
    nextChannel() {
        this.#step(1);
    }
    prevChannel() {
        this.#step(-1);
    }
    stop() {
        this.#control.stop();
    }
    release() {
        this.#control.release();
    }

    getChannelConfig() {
        requireBroadcast();
        return theChannelConfig();
    }
    // Of (ID_DVB_SI_DIRECT, delivery system descriptor, service), or of (kind of reception, triplet).
    createChannelObject(idType, first, second, third) {
        return idType === idTypes.ID_DVB_SI_DIRECT
            ? createChannelByDescriptor(first, second)
            : createChannel(idType, first, second, third);
    }

    get programmes() {
        return presentAndFollowing(this.currentChannel);
    }

    getComponents(componentType) {
        return this.#withChannel(() => componentsOf(componentType, false)) || new Collection([]);
    }
    getCurrentActiveComponents(componentType) {
        return this.#withChannel(() => componentsOf(componentType, true)) || new Collection([]);
    }
    selectComponent(component) {
        this.#withChannel(() => selectComponent(component));
    }
    unselectComponent(component) {
        this.#withChannel(() => unselectComponent(component));
    }

    // Listeners can be added while a channel is there, and end with it.
    addStreamEventListener(targetUrl, eventName, listener) {
        this.#withChannel(() => addStreamListener(this.#control, targetUrl, eventName, listener));
    }
    removeStreamEventListener(targetUrl, eventName, listener) {
        removeStreamListener(this.#control, targetUrl, eventName, listener);
    }

    get fullScreen() {
        return this.#fullScreen;
    }
    setFullScreen(fullScreen) {
        if (this.#fullScreen !== Boolean(fullScreen)) {
            this.#fullScreen = Boolean(fullScreen);
            this.#control.picture.isFullScreen = this.#fullScreen;
            this.#control.tell("FullScreenChange");
        }
    }
    get width() {
        return this.#fullScreen ? viewWidth(window) : sizeOfBox(this.#control.element, "width");
    }
    set width(width) {
        setSize(this.#control.element, "width", width);
    }
    get height() {
        return this.#fullScreen ? viewHeight(window) : sizeOfBox(this.#control.element, "height");
    }
    set height(height) {
        setSize(this.#control.element, "height", height);
    }

    getVolume() {
        return this.#control.picture.volume;
    }
    setVolume(volume) {
        return this.#control.picture.setVolume(volume);
    }

    #withChannel(action) {
        requireBroadcast();
        return this.#control.isTuned ? action() : undefined;
    }

    #leaveBroadcast() {
        if (controlling) {
            controlling.release();
        }
        state.broadcastRelated = false;
        tryCall("leaveBroadcast", null, false);
        this.#control.tell("ChannelChangeSucceeded", { channel: null });
    }

    // To the channel so many places further in the list, round its end.
    #step(by) {
        requireBroadcast();
        const channels = allChannels();
        if (this.#control.playState === playStates.unrealized || channels.length === 0) {
            this.#control.refuse(null, channelErrors.noChannelList);
            return;
        }
        const present = channelFacts.get(this.#control.channel);
        let at = by > 0 ? -1 : channels.length;
        for (let index = 0; index < channels.length; ++index) {
            at = sameTriplet(channelFacts.get(channels[index]), present) ? index : at;
        }
        this.setChannel(channels[(at + by + channels.length) % channels.length]);
    }
}

defineFields(VideoBroadcast.prototype, componentTypes);
defineType(["video/broadcast"], VideoBroadcast);
