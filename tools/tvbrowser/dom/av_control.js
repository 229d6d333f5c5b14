// video/mp4, video/mpeg, audio/mp4, audio/mpeg, application/dash+xml: media from the network, over the engine's <video>.

const avStates = { stopped: 0, playing: 1, paused: 2, connecting: 3, buffering: 4, finished: 5, error: 6 };
const haveMetadata = 1; // HTMLMediaElement.readyState
const haveFutureData = 3;

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
    #load = null; // of the medium that is open
    #queued = null; // URL
    #playsLeft = 1; // of memory audio
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
        this.#data = url === null ? "" : safeText(url);
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

    // False for what cannot be played: nothing, or backwards. The speed is told in any case.
    play(speed = 1) {
        const isPossible = this.#play(makeNumber(speed));
        this.#tell("PlaySpeedChanged", { speed: this.#speed });
        return isPossible;
    }
    #play(wanted) {
        this.#takeAttribute();
        const url = absoluteUrl(this.#data);
        if (this.#data === "" || url === null || !(wanted >= 0)) {
            return false;
        }
        if (!this.#isOpen() && !this.#open(url)) {
            return true;
        }
        this.#speed = wanted;
        if (wanted === 0) {
            pauseMedia(this.#picture.video);
            this.#advance(avStates.playing, avStates.paused);
            this.#pauseIfAsked();
        } else {
            media.playbackRate.set(this.#picture.video, wanted);
            this.#picture.play();
            this.#advance(avStates.paused, avStates.playing);
        }
        return true;
    }
    // What comes after the medium that is played. False if something is queued already; null takes it out again.
    queue(url) {
        if (url === null) {
            this.#queued = null;
            return true;
        }
        if (this.#queued !== null || absoluteUrl(safeText(url)) === null) {
            return false;
        }
        if (this.#isOpen()) {
            this.#queued = safeText(url);
            return true;
        }
        this.data = url;
        return this.play();
    }
    stop() {
        this.#queued = null;
        forgetLoad(this.#load);
        if (this.#playState !== avStates.stopped) {
            if (this.#picture.isShown) {
                this.#picture.hide();
            }
            this.#halt();
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
        this.#playsLeft = playsOf(this.#element);
        this.#watchLoad(url);
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
    #watchLoad(url) {
        const opening = this.#openings;
        this.#load = watchLoad(url, (error) => {
            const isMedium = media.readyState.get(this.#picture.video) >= haveMetadata;
            if (opening === this.#openings && !isMedium && mimeTypeOf(this.#element) !== "application/dash+xml") {
                this.#happened(() => this.#endWith(error));
            }
        });
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
    #halt() {
        if (this.#speed !== 0) {
            this.#speed = 0;
            this.#tell("PlaySpeedChanged", { speed: 0 });
        }
    }
    #finish() {
        if (--this.#playsLeft > 0) {
            media.currentTime.set(this.#picture.video, 0);
            this.#picture.play();
            return;
        }
        this.#halt();
        this.#enter(avStates.finished);
        this.#happened(() => this.#playQueued());
    }
    #playQueued() {
        if (this.#playState === avStates.finished && this.#queued !== null) {
            this.#data = this.#queued;
            this.#queued = null;
            this.play();
        }
    }
    #fail() {
        if (this.#isOpen()) {
            const { code } = media.error.get(this.#picture.video) || {};
            const opening = this.#openings;
            whenErrorIsKnown(code, this.#load, (error) => {
                if (opening === this.#openings) {
                    this.#happened(() => this.#endWith(error));
                }
            });
        }
    }
    #endWith(error) {
        if (this.#isOpen()) {
            this.#error = error;
            this.#queued = null;
            this.#halt();
            this.#enter(avStates.error);
        }
    }
}

defineType(mediaTypes, AvControl);
