// Keys of the remote control that the engine has no key of its own for become keyboard events of the page. Every key is
// told as keydown, keypress and keyup, as CE-HTML has it; the engine has no keypress for arrows.

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
const getterOf = (prototype, name) => uncurry(getOwnPropertyDescriptor(prototype, name).get);
const codeOfKey = getterOf(KeyboardEvent.prototype, "keyCode");
const nameOfKey = getterOf(KeyboardEvent.prototype, "key");
const isTaken = getterOf(Event.prototype, "defaultPrevented");
const take = uncurry(Event.prototype.preventDefault);

const hasFocus = uncurry(Document.prototype.hasFocus);
const Frames = [HTMLIFrameElement, HTMLFrameElement];
const isFrame = (element) => those(Frames, (Frame) => element instanceof Frame).length > 0;

// False if the page has taken the key.
function tellKey(type, keyCode, key) {
    const event = new KeyboardEventOfPage(type, {
        bubbles: true,
        cancelable: true,
        key,
        keyCode,
        which: keyCode,
        charCode: 0,
        view: window,
    });
    return dispatch(activeElementOf(document) || bodyOf(document) || document, event);
}

// A key is for the document that has the focus, as the engine's own keys are.
onSignal("key", ({ keyCode, down }) => {
    if (!hasFocus(document) || isFrame(activeElementOf(document))) {
        return;
    }
    const key = keyNames[keyCode] || "Unidentified";
    if (tellKey(down ? "keydown" : "keyup", keyCode, key) && down) {
        tellKey("keypress", keyCode, key);
    }
});

listenTo(window, "keydown", (event) => {
    const keyCode = codeOfKey(event);
    const isArrow = keyCode >= keyCodes.VK_LEFT && keyCode <= keyCodes.VK_DOWN;
    if (isArrow && event.isTrusted && !isTaken(event) && !tellKey("keypress", keyCode, nameOfKey(event))) {
        take(event);
    }
});
