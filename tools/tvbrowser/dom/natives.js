// Begins a document: takes the natives out of it, before the page's own scripts run, and gives them to the objects.

const { parse, stringify } = JSON;
const natives = globalThis[nameOfNatives];
delete globalThis[nameOfNatives];

const native = {
    call(name, argument) {
        return parse(natives.call(name, stringify(argument === undefined ? null : argument)));
    },
    listen(listener) {
        natives.listen((name, value) => listener(name, parse(value)));
    },
    log(text) {
        natives.log(String(text));
    },
};

// A frame may show what is none of the application, or what the application does not trust. A document without a place
// of its own has the origin of its maker.
function isOfApplication() {
    const { url, boundaries } = setup.application;
    const { protocol, href } = location;
    const isSandboxed = origin === "null" && (protocol === "http:" || protocol === "https:");
    const place = protocol === "about:" || protocol === "blob:" ? origin : href;
    return window === top || (!isSandboxed && native.call("isWithinBoundary", { place, url, boundaries }));
}

if (natives) {
    natives.begin(key, instance);
    if (isOfApplication()) {
        defineObjects(native, setup);
    }
}
