// Codes of the remote control's keys, as constants of KeyEvent and as names of the page's global object.

const keyCodes = {
    VK_LEFT: 37,
    VK_UP: 38,
    VK_RIGHT: 39,
    VK_DOWN: 40,
    VK_ENTER: 13,
    VK_0: 48,
    VK_1: 49,
    VK_2: 50,
    VK_3: 51,
    VK_4: 52,
    VK_5: 53,
    VK_6: 54,
    VK_7: 55,
    VK_8: 56,
    VK_9: 57,
    VK_RED: 403,
    VK_GREEN: 404,
    VK_YELLOW: 405,
    VK_BLUE: 406,
    VK_REWIND: 412,
    VK_STOP: 413,
    VK_PLAY: 415,
    VK_FAST_FWD: 417,
    VK_PAUSE: 19,
    VK_PLAY_PAUSE: 463,
    VK_BACK: 461,
    VK_INFO: 457,
};

// Pages declare names such as VK_RED themselves, by var, let or const: all three must go on to work.
function defineGlobal(name, value) {
    defineProperty(window, name, { value, writable: true, enumerable: false, configurable: true });
}

const keyEvent = {};
defineFields(keyEvent, keyCodes, true);
each(keyCodes, defineGlobal);
defineGlobal("KeyEvent", keyEvent);
// OIPF DAE, clause 7.15.5: for developers.
defineGlobal("debug", function debug(text) {
    native.log(safeText(text));
});
