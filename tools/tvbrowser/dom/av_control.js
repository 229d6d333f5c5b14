// video/mp4, video/mpeg, audio/mp4, audio/mpeg, application/dash+xml: media from the network, over the engine's <video>.

const avStates = { stopped: 0, playing: 1, paused: 2, connecting: 3, buffering: 4, finished: 5, error: 6 };
const avErrors = { format: 0, connection: 1, unidentified: 2, corrupt: 4, notAvailable: 5 };
const haveFutureData = 3; // HTMLMediaElement.readyState
const mediaErrors = { 2: avErrors.connection, 3: avErrors.corrupt }; // MediaError.code

const mediaTypes = ["video/mp4", "video/mpeg", "audio/mp4", "audio/mpeg", "application/dash+xml"];
const isMediaType = (name) => those(mediaTypes, (other) => other === name).length > 0;

class AvControl {
    static events = {
        PlayStateChange: ["state", "error"],
        PlayPositionChanged: ["position"],
        PlaySpeedChanged: ["speed"],
        FullScreenChange: [],
        ParentalRatingChange: ["contentID", "ratings", "DRMSystemID", "blocked"],
        ParentalRatingError: ["contentID", "ratings", "DRMSystemID"],
    };
    static end(object) {
        object.stop();
    }
    static takeAttribute(object) {
        object.#takeAttribute();
    }

    #element;
    #picture;
    #data = "";
    #playState = avStates.stopped;
    #error;
    #speed = 0;
    #fullScreen = false;
    #openings = 0; // what an earlier medium does is not of interest any more
    #told = null; // events of what happens to the medium at this moment

    constructor(element) {
        this.#element = element;
        this.#picture = new Picture(element);
        this.#takeAttribute();
        const heard = {
            loadedmetadata: () => this.#advance(avStates.connecting, avStates.buffering),
            waiting: () => this.#advance(avStates.playing, avStates.buffering),
            canplay: () => this.#pauseIfAsked(), // a pausing element is never playing
            playing: () => this.#advance(avStates.buffering, this.#speed === 0 ? avStates.paused : avStates.playing),
            ended: () => this.#finish(),
            error: () => this.#fail(),
        };
        each(heard, (name, react) => listenTo(this.#picture.video, name, () => this.#happened(react)));
    }

    get data() {
        this.#takeAttribute();
        return this.#data;
    }
    set data(url) {
        this.stop();
        this.#data = safeText(url);
    }
    get playState() {
        return this.#playState;
    }
    get error() {
        return this.#error;
    }
    get speed() {
        return this.#speed;
    }
    get playTime() {
        const seconds = media.duration.get(this.#picture.video);
        return this.#isOpen() && seconds < Infinity ? round(seconds * 1000) : undefined;
    }
    get playPosition() {
        return this.#isOpen() ? round(media.currentTime.get(this.#picture.video) * 1000) : undefined;
    }

    // False for what cannot be played: nothing, or backwards.
    play(speed = 1) {
        this.#takeAttribute();
        const wanted = makeNumber(speed);
        const url = absoluteUrl(this.#data);
        if (this.#data === "" || url === null || !(wanted >= 0)) {
            return false;
        }
        if (!this.#isOpen() && !this.#open(url)) {
            return true;
        }
        this.#changeSpeed(wanted);
        if (wanted === 0) {
            pauseMedia(this.#picture.video);
            this.#advance(avStates.playing, avStates.paused);
            this.#pauseIfAsked();
        } else {
            this.#picture.play();
            this.#advance(avStates.paused, avStates.playing);
        }
        return true;
    }
    stop() {
        if (this.#playState !== avStates.stopped) {
            if (this.#picture.isShown) {
                this.#picture.hide();
            }
            this.#changeSpeed(0);
            this.#enter(avStates.stopped);
        }
        return true;
    }
    // Milliseconds from the start.
    seek(position) {
        const seconds = makeNumber(position) / 1000;
        const duration = media.duration.get(this.#picture.video);
        if (!this.#isOpen() || !(seconds >= 0) || !(seconds <= duration)) {
            return false;
        }
        media.currentTime.set(this.#picture.video, seconds);
        this.#tell("PlayPositionChanged", { position: round(seconds * 1000) });
        return true;
    }

    getVolume() {
        return this.#picture.volume;
    }
    setVolume(volume) {
        return this.#picture.setVolume(volume);
    }
    get fullScreen() {
        return this.#fullScreen;
    }
    setFullScreen(fullScreen) {
        if (this.#fullScreen !== Boolean(fullScreen)) {
            this.#fullScreen = Boolean(fullScreen);
            this.#picture.isFullScreen = this.#fullScreen;
            this.#tell("FullScreenChange");
        }
    }
    get width() {
        return sizeOfBox(this.#element, "width");
    }
    set width(width) {
        setSize(this.#element, "width", width);
    }
    get height() {
        return sizeOfBox(this.#element, "height");
    }
    set height(height) {
        setSize(this.#element, "height", height);
    }

    // False for media that the engine cannot play: it is not even given them.
    #open(url) {
        this.#error = undefined;
        ++this.#openings;
        this.#enter(avStates.connecting);
        if (!canPlay(getAttribute(this.#element, "type"))) {
            this.#happened(() => {
                this.#error = avErrors.format;
                this.#enter(avStates.error);
            });
            return false;
        }
        this.#picture.show(url);
        return true;
    }
    // The attribute is the object's as soon as it is set; the engine would show its data too.
    #takeAttribute() {
        const url = getAttribute(this.#element, "data");
        if (url !== null) {
            removeAttribute(this.#element, "data");
            this.data = url;
        }
    }
    #isOpen() {
        return this.#playState >= avStates.playing && this.#playState <= avStates.buffering;
    }
    // After what has been told of before. The object is in its new state when the events are told, not earlier, because
    // handlers look at the state.
    #happened(react) {
        const opening = this.#openings;
        later(() => {
            if (opening === this.#openings) {
                const told = (this.#told = []);
                react();
                this.#told = null;
                mapped(told, ([event, fields]) => fireNow(this.#element, event, fields));
            }
        });
    }
    // What a call of the page causes is told after the call.
    #tell(event, fields) {
        if (this.#told) {
            append(this.#told, [event, fields]);
        } else {
            fireLater(this.#element, event, fields);
        }
    }
    #enter(playState) {
        if (this.#playState !== playState) {
            this.#playState = playState;
            this.#tell("PlayStateChange", { state: playState, error: this.#error });
        }
    }
    #advance(from, to) {
        if (this.#playState === from) {
            this.#enter(to);
        }
    }
    // With data enough to go on, a pausing element does not wait for any.
    #pauseIfAsked() {
        if (this.#speed === 0 && media.readyState.get(this.#picture.video) >= haveFutureData) {
            this.#advance(avStates.buffering, avStates.paused);
        }
    }
    #changeSpeed(speed) {
        if (speed > 0) {
            media.playbackRate.set(this.#picture.video, speed);
        }
        if (speed !== this.#speed) {
            this.#speed = speed;
            this.#tell("PlaySpeedChanged", { speed });
        }
    }
    #finish() {
        this.#changeSpeed(0);
        this.#enter(avStates.finished);
    }
    #fail() {
        if (!this.#isOpen()) {
            return;
        }
        const { code } = media.error.get(this.#picture.video) || {};
        this.#error = mediaErrors[code] === undefined ? avErrors.notAvailable : mediaErrors[code];
        this.#changeSpeed(0);
        this.#enter(avStates.error);
    }
}

defineType(mediaTypes, AvControl);

// Data in markup and by setAttribute is taken before the engine looks at it.
const watchMarkup = new MutationObserver((changes) => {
    for (let index = 0; index < changes.length; ++index) {
        const { target, addedNodes, type } = changes[index];
        if (type === "attributes") {
            adoptMedia(target);
        }
        for (let node = 0; node < addedNodes.length; ++node) {
            adoptMediaWithin(addedNodes[node]);
        }
    }
});
watchMarkup.observe(document, { childList: true, subtree: true, attributes: true, attributeFilter: ["data", "type"] });

const elementsNamed = uncurry(Element.prototype.getElementsByTagName);
const PageObject = HTMLObjectElement;
const PageElement = Element;

function adoptMediaWithin(node) {
    if (!(node instanceof PageElement)) {
        return;
    }
    adoptMedia(node);
    const found = elementsNamed(node, "object");
    for (let index = 0; index < found.length; ++index) {
        adoptMedia(found[index]);
    }
}

function adoptMedia(element) {
    const found = element instanceof PageObject ? behind(element) : null;
    if (found && found.kind.Class === AvControl) {
        AvControl.takeAttribute(found.object);
    }
}
