// A moving picture in the box of an <object>: a <video> as its only content. A page that copies its markup copies the
// <video> too; a mark tells which are of this script, so that copies are taken out again.

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

const canPlay = (mimeType) => canPlayType(createElement("video"), mimeType) !== "";

const fullVolume = 100;

const pictureMark = "data-broadcast-picture";
const pictures = new PrivateWeakMap(); // <video> -> the <object> that it is in

// Ends a <video> of this script.
function endVideo(video) {
    pauseMedia(video);
    removeAttribute(video, "src");
    loadMedia(video);
    removeFrom(parentOf(video), video);
}

// Takes out of a part of a document what has been copied of pictures.
function removeCopies(root) {
    const found = elementsNamed(root, "video");
    const copies = those(found, (video) => getAttribute(video, pictureMark) !== null && !pictures.get(video));
    mapped(copies, endVideo);
}

class Picture {
    #element;
    #isFullScreen = false;
    video = createElement("video");
    #source = new MediumSource(this.video);

    constructor(element) {
        this.#element = element;
        removeCopies(element);
        pictures.set(this.video, element);
        setAttribute(this.video, pictureMark, "");
    }

    // Shows the picture of the URL.
    show(url) {
        this.#source.set(url);
        if (!this.isShown) {
            this.place();
            appendTo(this.#element, this.video);
        }
    }
    get isShown() {
        return parentOf(this.video) === this.#element;
    }
    hide() {
        this.#source.forget();
        endVideo(this.video);
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

    // Full screen changes place and size, not what is above: an application shows its controls over the picture.
    place() {
        const box = this.#isFullScreen
            ? { position: "fixed", left: "0", top: "0", width: "100vw", height: "100vh" }
            : { position: "static", left: "", top: "", width: "100%", height: "100%" };
        each(box, (name, value) => setStyle(styleOf(this.video), name, value));
        setStyle(styleOf(this.video), "display", "block");
    }
}

const setStyle = uncurry(CSSStyleDeclaration.prototype.setProperty);
const styleOf = uncurry(getOwnPropertyDescriptor(HTMLElement.prototype, "style").get);

const viewWidth = uncurry(getOwnPropertyDescriptor(window, "innerWidth").get);
const viewHeight = uncurry(getOwnPropertyDescriptor(window, "innerHeight").get);
const sizeOfBox = (element, side) => round(boxOf(element)[side]);

// Changes the size of an element as its CSS does.
function setSize(element, side, pixels) {
    setStyle(styleOf(element), side, makeNumber(pixels) + "px");
}
