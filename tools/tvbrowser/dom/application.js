// The application that the document belongs to, and its keyset.

// What is known of it; the set changes it at any time.
const state = {
    broadcastRelated: Boolean(setup.application.broadcastRelated),
    visible: Boolean(setup.application.visible),
    active: true,
};

onSignal("application", ({ visible, broadcastRelated }) => {
    state.visible = Boolean(visible);
    state.broadcastRelated = Boolean(broadcastRelated);
});

// Broadcast is for broadcast-related applications only.
function requireBroadcast() {
    if (!state.broadcastRelated) {
        throw new DomException("the application is not broadcast-related", "SecurityError");
    }
}

// The groups of keys that the remote control has: all but SCROLL, ALPHA and OTHER.
const allGroups = 0x1bf;

// The keyset is the application's. What one of its documents asks for, the others are told.
const wantedKeys = { value: 0, otherKeys: [] };

function takeKeyset(asked) {
    if (asked) {
        ({ value: wantedKeys.value, otherKeys: wantedKeys.otherKeys, active: state.active } = asked.keyset);
    }
}

onSignal("keyset", takeKeyset);
takeKeyset(tryCall("keyset", null, null));

class Keyset {
    get value() {
        return wantedKeys.value;
    }
    get otherKeys() {
        return mapped(wantedKeys.otherKeys, (key) => key);
    }
    get maximumValue() {
        return allGroups;
    }
    get maximumOtherKeys() {
        return [];
    }
    get supportsPointer() {
        return false;
    }

    // Asks for the keys of the groups; gives the groups that the application has from now on. OTHER is the keys of the
    // list, if the remote control has one of them.
    setValue(value, otherKeys) {
        const wanted = makeNumber(value);
        const others = mapped(isArray(otherKeys) ? otherKeys : [], (key) => makeNumber(key) | 0);
        const otherKeysOfSet = wanted & keysetGroups.OTHER ? those(others, isRemoteKey) : [];
        wantedKeys.otherKeys = otherKeysOfSet;
        wantedKeys.value = wanted & (allGroups | (otherKeysOfSet.length > 0 ? keysetGroups.OTHER : 0));
        askForKeys();
        return wantedKeys.value;
    }
}

const isRemoteKey = (code) => those(namesOf(keyCodes), (name) => keyCodes[name] === code).length > 0;

// An application whose input is not active gets no keys; its keyset stays what it is.
function askForKeys() {
    const { value, otherKeys } = wantedKeys;
    const { active } = state;
    const granted = active ? { mask: value, otherKeys } : { mask: 0, otherKeys: [] };
    call("setKeyset", { ...granted, keyset: { value, otherKeys, active } });
}

const keysetGroups = {
    RED: 0x1,
    GREEN: 0x2,
    YELLOW: 0x4,
    BLUE: 0x8,
    NAVIGATION: 0x10,
    VCR: 0x20,
    SCROLL: 0x40,
    INFO: 0x80,
    NUMERIC: 0x100,
    ALPHA: 0x200,
    OTHER: 0x400,
};
defineFields(Keyset.prototype, keysetGroups);

const keyset = new Keyset();

class ApplicationPrivateData {
    get keyset() {
        return keyset;
    }
    // The channel whose signalling decides on the application.
    get currentChannel() {
        return state.broadcastRelated ? presentedChannel() : null;
    }
    getFreeMem() {
        return 64 * 1024 * 1024; // nobody limits a page below this
    }
}

const privateData = new ApplicationPrivateData();

class Application extends EventTarget {
    get visible() {
        return state.visible;
    }
    get active() {
        return state.active;
    }
    get window() {
        return top;
    }
    get privateData() {
        return privateData;
    }

    show() {
        state.visible = true;
        call("showApplication");
        return true;
    }
    hide() {
        state.visible = false;
        call("hideApplication");
        return true;
    }
    activateInput() {
        state.active = true;
        askForKeys();
        return true;
    }
    deactivateInput() {
        state.active = false;
        askForKeys();
    }

    // Starts another application in the place of this one, and gives it. Null if it cannot be started.
    createApplication(uri, createChild) {
        const url = absoluteUrl(safeText(uri));
        return url !== null && call("createApplication", { url, child: Boolean(createChild) })
            ? new OtherApplication()
            : null;
    }
    destroyApplication() {
        call("destroyApplication");
    }
}

// An application that takes the place of this one. Nothing of it is to be seen while this one runs.
class OtherApplication {
    get visible() {
        return false;
    }
    get active() {
        return false;
    }
    get privateData() {
        throw new DomException("the data of another application", "SecurityError");
    }
}

// The set never asks an application for these; pages may set them.
defineHandlers(Application, {
    ApplicationActivated: [],
    ApplicationDeactivated: [],
    ApplicationShown: [],
    ApplicationHidden: [],
    ApplicationDestroyRequest: [],
});

const ownApplication = new Application();

// Whether it is a document that a frame of the page shows.
function isShown(ofDocument) {
    try {
        return viewOf(ofDocument).top === top;
    } catch (error) {
        return false;
    }
}

// The URL in full, seen from the page; null if it is none.
function absoluteUrl(text) {
    try {
        return new PageUrl(text, baseOf(document)).href;
    } catch (error) {
        return null;
    }
}

const PageUrl = URL;
const baseOf = uncurry(getOwnPropertyDescriptor(Node.prototype, "baseURI").get);
