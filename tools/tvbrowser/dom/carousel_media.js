// Media out of carousels. The engine's player takes no dvb: URLs, so it gets the bytes of the whole file.

const makeBlobUrl = URL.createObjectURL;
const forgetBlobUrl = URL.revokeObjectURL;
const setResponseType = uncurry(getOwnPropertyDescriptor(Request.prototype, "responseType").set);
const responseOf = uncurry(getOwnPropertyDescriptor(Request.prototype, "response").get);
const isPaused = uncurry(getOwnPropertyDescriptor(HTMLMediaElement.prototype, "paused").get);

// Calls with the file as a blob, or null.
function readFile(url, take) {
    const request = new Request();
    listenTo(request, "loadend", () => take(statusOf(request) === 200 ? responseOf(request) : null));
    openRequest(request, "GET", url);
    setResponseType(request, "blob");
    sendRequest(request);
}

// What a <video> plays.
class MediumSource {
    #video;
    #blobUrl = null;
    #settings = 0; // a file that comes after another medium is not of interest any more

    constructor(video) {
        this.#video = video;
    }
    set(url) {
        this.forget();
        if (!startsWith(lowerCase(url), "dvb:")) {
            setAttribute(this.#video, "src", url);
            return;
        }
        removeAttribute(this.#video, "src");
        loadMedia(this.#video);
        const setting = this.#settings;
        readFile(url, (file) => {
            if (setting === this.#settings) {
                this.#take(file, url);
            }
        });
    }
    // Without the file the engine is given what it cannot play, and tells that as of any medium. A new source resets what
    // has been asked of the element meanwhile.
    #take(file, url) {
        const speed = media.playbackRate.get(this.#video);
        const plays = !isPaused(this.#video);
        this.#blobUrl = file && makeBlobUrl(file);
        setAttribute(this.#video, "src", this.#blobUrl || url);
        media.playbackRate.set(this.#video, speed);
        if (plays) {
            catchRejection(playMedia(this.#video), () => {});
        }
    }
    forget() {
        ++this.#settings;
        if (this.#blobUrl !== null) {
            forgetBlobUrl(this.#blobUrl);
            this.#blobUrl = null;
        }
    }
}
