// application/oipfDrmAgent: messages to the set's CA system.

const drmResults = { unknownError: 1, cannotProcess: 2, unknownSystem: 5 };
const drmStatus = { ready: 0, unknown: 1 };

let nextSession = firstNumber();
const unanswered = new PrivateMap(); // session -> {element, msgId}; keeps the element until the answer
let agents = []; // weak references to elements
let moduleSlots = []; // slots with a module, as far as the set has told
let asksForModule = false; // from the first agent on

class DrmAgent {
    static events = {
        DRMMessageResult: ["msgID", "resultMsg", "resultCode"],
        DRMSystemStatusChange: ["DRMSystem"],
        DRMSystemMessage: ["msg", "DRMSystemID"],
    };

    #element;

    constructor(element) {
        this.#element = element;
        append(agents, new PrivateWeakRef(element));
        if (!asksForModule) {
            asksForModule = true;
            askForModule();
        }
    }

    // Gives the message's identifier; the answer comes as DRMMessageResult.
    sendDRMMessage(msgType, msg, drmSystemId) {
        const session = nextSession++;
        const msgId = makeText(session);
        unanswered.set(session, { element: this.#element, msgId });
        const system = casystemOf(drmSystemId);
        const message = { session, system, messageType: safeText(msgType), message: safeText(msg) };
        if (system === null) {
            answerDrm(session, "", drmResults.unknownSystem);
        } else if (!tryCall("sendDrmMessage", message, false)) {
            answerDrm(session, "", drmResults.cannotProcess);
        }
        return msgId;
    }
    DRMSystemStatus(drmSystemId) {
        return moduleSlots.length > 0 && casystemOf(drmSystemId) !== null ? drmStatus.ready : drmStatus.unknown;
    }
}

defineType(["application/oipfDrmAgent"], DrmAgent);

// The set tells a slot with a module, if there is one.
function askForModule() {
    tryCall("connectCa", { session: nextSession++ }, false);
}

// The number in "urn:dvb:casystemid:1234"; null for a system that the set does not have. Without a name: the set's own,
// if it is known. A set that does not say its systems leaves it to the module.
function casystemOf(drmSystemId) {
    const known = setup.capabilities.drm || [];
    if (drmSystemId === undefined || drmSystemId === null) {
        return known.length > 0 ? known[0] : null;
    }
    const found = matchOf(/^urn:dvb:casystemid:([0-9]{1,5})$/, safeText(drmSystemId));
    const system = found ? makeNumber(found[1]) : -1;
    const isPossible = system >= 0 && system <= 0xffff;
    return isPossible && (known.length === 0 || those(known, (other) => other === system).length > 0) ? system : null;
}

function answerDrm(session, resultMsg, resultCode) {
    const asked = unanswered.get(session);
    if (asked) {
        unanswered.delete(session);
        fireLater(asked.element, "DRMMessageResult", { msgID: asked.msgId, resultMsg, resultCode });
    }
}

onSignal("drmReply", ({ session, code, message }) => answerDrm(session, message, code));
onSignal("service", ({ connected }) => {
    if (!connected) {
        unanswered.forEach((asked, session) => answerDrm(session, "", drmResults.unknownError));
        takeSlots([]);
    } else if (asksForModule) {
        askForModule();
    }
});

function takeSlots(slots) {
    const isChange = slots.length !== moduleSlots.length;
    moduleSlots = slots;
    if (isChange) {
        agents = those(agents, (agent) => agent.deref());
        mapped(agents, (agent) => fireLater(agent.deref(), "DRMSystemStatusChange", { DRMSystem: drmSystemName() }));
    }
}

function changeSlot(slot, isInserted) {
    const others = those(moduleSlots, (other) => other !== slot);
    takeSlots(isInserted ? both(others, [slot]) : others);
}

const drmSystemName = () => {
    const known = setup.capabilities.drm || [];
    return known.length > 0 ? "urn:dvb:casystemid:" + known[0] : undefined;
};

onSignal("caConnected", ({ slot, result }) => {
    if (result === 0) {
        changeSlot(slot, true);
    }
});
onSignal("drmSystemStatus", ({ slot, status }) => changeSlot(slot, status === 1));
