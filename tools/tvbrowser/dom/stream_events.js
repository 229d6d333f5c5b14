// Stream events: messages of the broadcast to pages, by an XML description of the event or by an object of the
// carousel.

const streamListeners = []; // {owner, url, name, listener, id, awaitsAit}
let nextStreamListener = firstNumber();

const isSameListener = (one, owner, url, name, listener) =>
    one.owner === owner && one.url === url && one.name === name && one.listener === listener;

function addStreamListener(owner, targetUrl, eventName, listener) {
    const url = absoluteUrl(safeText(targetUrl));
    const name = safeText(eventName);
    if (those(streamListeners, (other) => isSameListener(other, owner, url, name, listener)).length > 0) {
        return;
    }
    const entry = { owner, url, name, listener, id: nextStreamListener++ };
    append(streamListeners, entry);
    if (url === null) {
        later(() => failStreamListener(entry));
    } else if (startsWith(url, "dvb:")) {
        listenToObject(entry);
    } else {
        describeStreamEvent(entry);
    }
}

// Removes the listeners for which `isMeant` holds.
function removeStreamListeners(isMeant) {
    for (let index = streamListeners.length - 1; index >= 0; --index) {
        const entry = streamListeners[index];
        if (isMeant(entry)) {
            for (let next = index; next + 1 < streamListeners.length; ++next) {
                streamListeners[next] = streamListeners[next + 1];
            }
            --streamListeners.length;
            tryCall("removeStreamEventListener", { id: entry.id }, false);
        }
    }
}

function removeStreamListener(owner, targetUrl, eventName, listener) {
    const url = absoluteUrl(safeText(targetUrl));
    const name = safeText(eventName);
    removeStreamListeners((entry) => isSameListener(entry, owner, url, name, listener));
}

const isListening = (entry) => those(streamListeners, (other) => other === entry).length > 0;

// An event that does not exist: the listener is told once and is no listener any more.
function failStreamListener(entry) {
    if (isListening(entry)) {
        removeStreamListeners((other) => other === entry);
        deliverStreamEvent(entry, "error", "");
    }
}

function deliverStreamEvent(entry, status, data) {
    const target = entry.owner.element;
    const event = makeEvent("StreamEvent", {
        name: entry.name,
        data: upperCase(data),
        text: textOfHex(data),
        status,
        target,
    });
    const { listener } = entry;
    if (typeof listener === "function") {
        guarded(() => apply(listener, target, [event]));
    } else {
        guarded(() => listener.handleEvent(event));
    }
}

onSignal("streamEvent", ({ id, status, data }) => {
    const entry = those(streamListeners, (other) => other.id === id)[0];
    if (entry && status === "trigger") {
        deliverStreamEvent(entry, status, data);
    } else if (entry) {
        failStreamListener(entry);
    }
});

function askForStreamEvents(entry, what) {
    if (!tryCall("addStreamEventListener", { id: entry.id, ...what }, false)) {
        later(() => failStreamListener(entry));
    }
}

const upperCase = uncurry(String.prototype.toUpperCase);
const replaceAll = uncurry(String.prototype.replaceAll);
const decodeText = uncurry(TextDecoder.prototype.decode);
const utf8 = new TextDecoder("utf-8");
const Bytes = Uint8Array;

// The bytes as UTF-8; what is none is left out.
function textOfHex(hex) {
    const bytes = bytesOfHex(hex);
    const codes = new Bytes(bytes.length);
    for (let index = 0; index < bytes.length; ++index) {
        codes[index] = codeAt(bytes, index);
    }
    return replaceAll(decodeText(utf8, codes), "\ufffd", "");
}

// By XML description: <dsmcc><dsmcc_object component_tag="7"><stream_event stream_event_id="1" stream_event_name="x"/>.

const Request = XMLHttpRequest;
const openRequest = uncurry(Request.prototype.open);
const sendRequest = uncurry(Request.prototype.send);
const expectType = uncurry(Request.prototype.overrideMimeType);
const documentOf = uncurry(getOwnPropertyDescriptor(Request.prototype, "responseXML").get);
const statusOf = uncurry(getOwnPropertyDescriptor(Request.prototype, "status").get);
const allNamed = uncurry(Document.prototype.getElementsByTagNameNS);
const inCollection = uncurry(HTMLCollection.prototype.item);

function describeStreamEvent(entry) {
    const request = new Request();
    listenTo(request, "loadend", () => {
        const found =
            statusOf(request) === 200 || statusOf(request) === 0 ? eventIn(documentOf(request), entry.name) : null;
        if (!isListening(entry)) {
            return;
        }
        if (found) {
            askForStreamEvents(entry, found);
        } else {
            failStreamListener(entry);
        }
    });
    try {
        openRequest(request, "GET", entry.url);
        expectType(request, "application/xml");
        sendRequest(request);
    } catch (error) {
        later(() => failStreamListener(entry));
    }
}

// {componentTag, eventId} of the event with the name; null if the description has none, or is none.
function eventIn(description, name) {
    const events = description && allNamed(description, "*", "stream_event");
    for (let index = 0; events && inCollection(events, index); ++index) {
        const event = inCollection(events, index);
        if (getAttribute(event, "stream_event_name") === name) {
            const componentTag = numberIn(getAttribute(parentOf(event), "component_tag"), 0xff);
            const eventId = numberIn(getAttribute(event, "stream_event_id"), 0xffff);
            return componentTag === null || eventId === null ? null : { componentTag, eventId };
        }
    }
    return null;
}

// Decimal, or hexadecimal with 0x.
function numberIn(text, highest) {
    const number = text !== null && matchOf(/^\s*(0[xX][0-9a-fA-F]+|[0-9]+)\s*$/, text) ? makeNumber(text) : -1;
    return number >= 0 && number <= highest ? number : null;
}

// By URL: dvb://ONID.[TSID].SID[.COMPONENT_TAG]/PATH of the presented service, dvb://current.ait/ORG.APP/PATH of an
// application's carousel. All numbers are hexadecimal.

const isOfApplication = (url) => startsWith(lowerCase(url), "dvb://current.ait/");

function isAitKnown() {
    const { known, signalled, complete } = tryCall("applications", null, {});
    return complete || (known && !signalled);
}

function listenToObject(entry) {
    entry.awaitsAit = isOfApplication(entry.url) && !isAitKnown();
    if (entry.awaitsAit) {
        return;
    }
    const found = objectOf(entry.url);
    if (found) {
        askForStreamEvents(entry, { ...found, name: entry.name });
    } else {
        later(() => failStreamListener(entry));
    }
}

onSignal("applicationsChanged", () => {
    mapped(
        those(streamListeners, (entry) => entry.awaitsAit),
        listenToObject
    );
});

function objectOf(url) {
    const parts = matchOf(/^dvb:\/\/([^/?#]*)\/([^?#]*)/, url);
    if (!parts) {
        return null;
    }
    const path = decodedPath(parts[2]);
    const inCarousel = matchOf(/^([0-9a-f]+)\.([0-9a-f]*)\.([0-9a-f]+)(?:\.([0-9a-f]+))?$/i, parts[1]);
    if (inCarousel) {
        const presented = tryCall("presented", null, null);
        const triplet = {
            onid: hexNumber(inCarousel[1]),
            tsid: inCarousel[2] === "" && presented ? presented.tsid : hexNumber(inCarousel[2]),
            sid: hexNumber(inCarousel[3]),
        };
        const componentTag = inCarousel[4] === undefined ? null : hexNumber(inCarousel[4]);
        return sameTriplet(triplet, presented) ? { componentTag, object: path } : null;
    }
    const ofApplication = matchOf(/^([0-9a-f]+)\.([0-9a-f]+)\/(.*)$/i, path);
    return isOfApplication(url) && ofApplication
        ? objectOfApplication(hexNumber(ofApplication[1]), hexNumber(ofApplication[2]), ofApplication[3])
        : null;
}

const hexNumber = (digits) => makeNumber("0x" + digits);

function decodedPath(path) {
    try {
        return decodeUri(path);
    } catch (error) {
        return path;
    }
}

function objectOfApplication(organisation, application, path) {
    const signalled = tryCall("applications", null, { list: [] }).list;
    const isMeant = (one) => one.organisation === organisation && one.application === application && one.carousel;
    const found = those(signalled, isMeant)[0];
    return found ? { componentTag: found.carousel.componentTag, object: path } : null;
}
