// Video, audio and subtitles of the presented service.

const componentTypes = {
    COMPONENT_TYPE_VIDEO: 0,
    COMPONENT_TYPE_AUDIO: 1,
    COMPONENT_TYPE_SUBTITLE: 2,
};

// What the broadcast's numbers are as media types: stream_type, and in the high byte the tag of the descriptor that
// names the coding.
const encodings = {
    0x01: "video/mpeg",
    0x02: "video/mpeg",
    0x1b: "video/mp4",
    0x24: "video/mp4",
    0x03: "audio/mpeg",
    0x04: "audio/mpeg",
    0x0f: "audio/mp4",
    0x11: "audio/mp4",
    0x6a06: "audio/ac3",
    0x7a06: "audio/eac3",
};
const aspectRatios = { 2: 1.33, 3: 1.78, 4: 2.21 };

const componentFacts = new PrivateWeakMap(); // AVComponent -> what it was made of

class AVComponent {
    constructor(known) {
        componentFacts.set(this, known);
        defineFields(this, {
            componentTag: known.tag === null ? undefined : known.tag,
            pid: known.pid,
            type: known.type,
            encoding: encodings[known.encoding],
            encrypted: known.encrypted,
            ...fieldsOfType(known),
        });
    }
}
defineFields(AVComponent.prototype, componentTypes);

function fieldsOfType({ type, aspectRatio, language, audioDescription, audioChannels, hearingImpaired }) {
    switch (type) {
        case componentTypes.COMPONENT_TYPE_VIDEO:
            return { aspectRatio: aspectRatios[aspectRatio] };
        case componentTypes.COMPONENT_TYPE_AUDIO:
            return { language, audioDescription, audioChannels };
        default:
            return { language, hearingImpaired, label: undefined };
    }
}

// The components of a type, or of all types.
function componentsOf(type, onlyActive) {
    const isWanted = (known) =>
        (type === undefined || type === null || known.type === type) && (!onlyActive || known.active);
    return new Collection(mapped(those(tryCall("components", null, []), isWanted), (known) => new AVComponent(known)));
}

const isComponentType = (type) => type === 0 || type === 1 || type === 2;

// Of a component or of a type: the component to present.
function selectComponent(wanted) {
    const known = componentFacts.get(wanted);
    if (known) {
        tryCall("selectComponent", { type: known.type, pid: known.pid }, false);
    } else if (isComponentType(wanted)) {
        tryCall("selectComponent", { type: wanted }, false);
    } else {
        throw new TypeError("selectComponent takes a component or a type of components");
    }
}

function unselectComponent(wanted) {
    const known = componentFacts.get(wanted);
    if (!known && !isComponentType(wanted)) {
        throw new TypeError("unselectComponent takes a component or a type of components");
    }
    const isPresented = (other) => other.active && other.type === known.type && other.pid === known.pid;
    if (!known || those(tryCall("components", null, []), isPresented).length > 0) {
        tryCall("unselectComponent", { type: known ? known.type : wanted }, false);
    }
}

onSignal("componentsChanged", ({ types }) => {
    tellControlling("ComponentChanged", { componentType: types.length === 1 ? types[0] : undefined });
});
onSignal("selectedComponentChanged", ({ type }) => {
    tellControlling("SelectedComponentChanged", { componentType: type });
});
