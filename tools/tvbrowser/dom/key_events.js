// Keys of the remote control that the engine has no key of its own for become keyboard events of the page.

const keyNames = {
    403: "ColorF0Red",
    404: "ColorF1Green",
    405: "ColorF2Yellow",
    406: "ColorF3Blue",
    412: "MediaRewind",
    413: "MediaStop",
    415: "MediaPlay",
    417: "MediaFastForward",
    19: "Pause",
    463: "MediaPlayPause",
    461: "GoBack",
    457: "Info",
};

const activeElementOf = uncurry(getOwnPropertyDescriptor(Document.prototype, "activeElement").get);
const bodyOf = uncurry(getOwnPropertyDescriptor(Document.prototype, "body").get);
const KeyboardEventOfPage = KeyboardEvent;

const hasFocus = uncurry(Document.prototype.hasFocus);
const Frames = [HTMLIFrameElement, HTMLFrameElement];
const isFrame = (element) => those(Frames, (Frame) => element instanceof Frame).length > 0;

// A key is for the document that has the focus, as the engine's own keys are.
onSignal("key", ({ keyCode, down }) => {
    if (!hasFocus(document) || isFrame(activeElementOf(document))) {
        return;
    }
    const event = new KeyboardEventOfPage(down ? "keydown" : "keyup", {
        bubbles: true,
        cancelable: true,
        key: keyNames[keyCode] || "Unidentified",
        keyCode,
        which: keyCode,
        charCode: 0,
        view: window,
    });
    dispatch(activeElementOf(document) || bodyOf(document) || document, event);
});
