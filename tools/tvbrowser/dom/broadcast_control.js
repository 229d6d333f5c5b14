// The states of a video/broadcast object:
//
//   unrealized --bind, tune--> connecting --the channel is there--> presenting
//   connecting, presenting --stop--> stopped --bind, tune--> connecting
//   any --release, a failed tune--> unrealized
//
// One object of a page and its frames controls the broadcast at a time: the one that is not unrealized.

const playStates = { unrealized: 0, connecting: 1, presenting: 2, stopped: 3 };

let controlling = null;

class BroadcastControl {
    playState = playStates.unrealized;
    channel = null;
    isReacting = false; // to something that the set does

    constructor(element) {
        this.element = element;
        this.picture = new Picture(element);
    }

    bind() {
        if (this.playState === playStates.connecting || this.playState === playStates.presenting) {
            return;
        }
        if (!this.takeControl()) {
            this.tell("PlayStateChange", { state: this.playState, error: channelErrors.lockedByOther });
            return;
        }
        this.channel = presentedChannel();
        this.enter(playStates.connecting, isServiceGone() ? channelErrors.unidentified : undefined);
        later(() => this.presentIfKnown());
    }

    tune(channel, facts, quiet) {
        if (!this.takeControl()) {
            this.refuse(channel, channelErrors.lockedByOther);
            return;
        }
        this.interruptTune();
        this.leaveChannel();
        this.channel = channel;
        this.enter(playStates.connecting);
        if (!askToTune(this, channel, facts, quiet)) {
            this.fail(channel, channelErrors.unidentified);
        }
    }

    stop() {
        if (this.playState === playStates.connecting || this.playState === playStates.presenting) {
            this.enter(playStates.stopped);
        }
    }

    release(error) {
        if (this.playState !== playStates.unrealized) {
            this.leaveChannel();
            this.channel = null;
            controlling = null;
            tryCall("leaveControl", null, true);
            this.enter(playStates.unrealized, error);
        }
    }

    refuse(channel, errorState) {
        this.tell("ChannelChangeError", { channel, errorState });
    }

    // What a call of the page causes is told after the call. What the set does is told at once, so that handlers find the
    // object in the state of which they are told; what they call is a call again.
    tell(event, fields) {
        if (this.isReacting) {
            this.isReacting = false;
            fireNow(this.element, event, fields);
            this.isReacting = true;
        } else {
            fireLater(this.element, event, fields);
        }
    }
    react(action) {
        this.isReacting = true;
        guarded(action);
        this.isReacting = false;
    }

    // A channel is there, so that its components and stream events can be had.
    get isTuned() {
        return this.playState === playStates.presenting || this.playState === playStates.stopped;
    }

    // False if another object of the page is in control. One that has left the page is not any more.
    takeControl() {
        if (controlling && controlling !== this) {
            if (isAttached(controlling.element)) {
                return false;
            }
            controlling.release();
        }
        if (!tryCall("takeControl", null, true)) {
            return false;
        }
        controlling = this;
        return true;
    }

    enter(playState, error) {
        if (this.playState !== playState) {
            this.playState = playState;
            this.showPicture();
            this.tell("PlayStateChange", { state: playState, error });
            tellRatings(this);
        }
    }

    // Where the set gives its picture as a stream, the element shows it; else it is a hole above the picture.
    showPicture() {
        if (setup.player && this.playState === playStates.presenting) {
            this.picture.show(setup.player);
            this.picture.play();
        } else if (this.picture.isShown) {
            this.picture.hide();
        }
    }

    leaveChannel() {
        removeStreamListeners((entry) => entry.owner === this);
    }

    interruptTune() {
        const tune = tuneOf(this);
        if (tune) {
            tune.isTold = true;
            this.refuse(tune.channel, channelErrors.interrupted);
        }
    }

    fail(channel, errorState) {
        this.refuse(channel, errorState);
        this.release(errorState);
    }

    // The answer to a tune, or the set has changed the channel. An answer that is not this object's is a change of the
    // channel too, but while the object waits for a tune of its own, only that one matters.
    channelChanged(started, triplet) {
        const tune = answeredTune(started, triplet);
        const isOwn = tune !== null && tune.owner === this && !tune.isTold;
        if (!isOwn && (!started || (tune && tuneOf(this)))) {
            return;
        }
        if (!started) {
            this.fail(tune.channel, failureOf(tune.facts));
            return;
        }
        this.interruptTune();
        const isNew = isOwn || !sameTriplet(channelFacts.get(this.channel), triplet);
        this.channel = channelByTriplet(triplet);
        if (isNew) {
            this.follow();
        }
        this.presentIfKnown();
    }

    // Tells of the new channel.
    follow() {
        this.leaveChannel();
        if (this.playState === playStates.presenting) {
            this.enter(playStates.connecting);
        }
        this.tell("ChannelChangeSucceeded", { channel: this.channel });
    }

    presentIfKnown() {
        const isReady = this.channel && !tuneOf(this) && !isServiceGone();
        if (this.playState === playStates.connecting && isReady) {
            this.enter(playStates.presenting);
        }
    }

    // Without the set's broadcast service there is nothing to present. It comes back by itself, and then the channel.
    serviceChanged(connected) {
        const tune = tuneOf(this);
        if (connected) {
            this.channel = this.channel && (presentedChannel() || this.channel);
            this.presentIfKnown();
        } else if (tune) {
            this.fail(tune.channel, channelErrors.unidentified);
        } else if (this.playState === playStates.presenting) {
            this.enter(playStates.connecting, channelErrors.unidentified);
        }
    }
}

// An object of another document of the page wants the control.
onSignal("controlIsWanted", () => {
    if (controlling && !(isAttached(controlling.element) && isShown(document))) {
        controlling.release();
    }
});

// After what calls of the page have caused before.
function onBroadcastSignal(name, listener) {
    onSignal(name, (value) => later(() => listener(value)));
}
onBroadcastSignal("channelChanged", ({ started, channel }) => {
    const control = controlling;
    if (control) {
        control.react(() => control.channelChanged(started, channel));
    } else {
        answeredTune(started, channel);
    }
});
// What is known of the channel may come after the channel. A page that hears of the new list finds it there.
onBroadcastSignal("channelsChanged", () => {
    const facts = controlling && channelFacts.get(controlling.channel);
    if (facts && facts.dsd === undefined) {
        controlling.channel = channelByTriplet(facts);
    }
    tellListUpdate();
});
// The set may give its stream late, another one, or none any more.
onBroadcastSignal("picture", ({ url }) => {
    setup.player = url;
    if (controlling) {
        controlling.showPicture();
    }
});
onBroadcastSignal("service", ({ connected }) => {
    const control = controlling;
    if (control) {
        control.react(() => control.serviceChanged(connected));
    }
    if (!connected) {
        forgetTunes();
    }
});

// What happens to the presented service is told to the object in control.
function tellControlling(event, fields) {
    if (controlling && state.broadcastRelated) {
        controlling.tell(event, fields);
    }
}
