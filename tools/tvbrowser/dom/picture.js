// A moving picture in the box of an <object>: a <video> as its only content.

const Video = HTMLVideoElement.prototype;
const Media = HTMLMediaElement.prototype;
const accessor = (prototype, name) => getOwnPropertyDescriptor(prototype, name);
const media = create(null);
for (const name of ["duration", "currentTime", "playbackRate", "volume", "error", "readyState"]) {
    const { get, set } = accessor(Media, name);
    media[name] = set ? { get: uncurry(get), set: uncurry(set) } : { get: uncurry(get) };
}
const playMedia = uncurry(Media.play);
const pauseMedia = uncurry(Media.pause);
const loadMedia = uncurry(Media.load);
const canPlayType = uncurry(Media.canPlayType);
const catchRejection = uncurry(Promise.prototype.catch);
const computedStyle = getComputedStyle;

const canPlay = (mimeType) => canPlayType(createElement("video"), mimeType) !== "";

const fullVolume = 100;

class Picture {
    #element;
    #isFullScreen = false;
    video = createElement("video");

    constructor(element) {
        this.#element = element;
    }

    // Shows the picture of the URL.
    show(url) {
        setAttribute(this.video, "src", url);
        if (!this.isShown) {
            this.place();
            appendTo(this.#element, this.video);
        }
    }
    get isShown() {
        return parentOf(this.video) === this.#element;
    }
    hide() {
        pauseMedia(this.video);
        removeAttribute(this.video, "src");
        loadMedia(this.video);
        removeFrom(this.#element, this.video);
    }
    get volume() {
        return round(media.volume.get(this.video) * fullVolume);
    }
    // False for what is no volume.
    setVolume(volume) {
        const wanted = makeNumber(volume);
        if (!(wanted >= 0 && wanted <= fullVolume)) {
            return false;
        }
        media.volume.set(this.video, wanted / fullVolume);
        return true;
    }

    play() {
        catchRejection(playMedia(this.video), () => {}); // the element tells errors by events
    }

    set isFullScreen(isFullScreen) {
        this.#isFullScreen = isFullScreen;
        this.place();
    }

    // Without a picture the element is replaced and has its size; with one it is what its display says, and an inline
    // element has no size of its own.
    place() {
        const style = computedStyle(this.#element);
        const isInline = valueOf(style, "display") === "inline";
        const box = this.#isFullScreen
            ? { position: "fixed", left: "0", top: "0", width: "100vw", height: "100vh", "z-index": "2147483647" }
            : {
                  position: "static",
                  left: "",
                  top: "",
                  width: isInline ? sizeOf(valueOf(style, "width"), "300px") : "100%",
                  height: isInline ? sizeOf(valueOf(style, "height"), "150px") : "100%",
                  "z-index": "",
              };
        each(box, (name, value) => setStyle(styleOf(this.video), name, value));
        setStyle(styleOf(this.video), "display", isInline ? "inline-block" : "block");
    }
}

const valueOf = uncurry(CSSStyleDeclaration.prototype.getPropertyValue);
const setStyle = uncurry(CSSStyleDeclaration.prototype.setProperty);
const styleOf = uncurry(getOwnPropertyDescriptor(HTMLElement.prototype, "style").get);
const sizeOf = (computed, otherwise) => (computed === "auto" || computed === "" ? otherwise : computed);

const viewWidth = uncurry(getOwnPropertyDescriptor(window, "innerWidth").get);
const viewHeight = uncurry(getOwnPropertyDescriptor(window, "innerHeight").get);
const sizeOfBox = (element, side) => round(boxOf(element)[side]);

// Changes the size of an element as its CSS does.
function setSize(element, side, pixels) {
    setStyle(styleOf(element), side, makeNumber(pixels) + "px");
}
