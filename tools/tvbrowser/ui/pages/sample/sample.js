// The sample application. It uses the broadcast as any HbbTV application does; nothing here knows which browser it is in.
"use strict";

const broadcast = document.getElementById("broadcast");
const application = document.getElementById("manager").getOwnerApplication(document);
let channelList = null;
let isShown = true;

function element(id) {
    return document.getElementById(id);
}

function log(text) {
    const line = document.createElement("li");
    line.textContent = new Date().toTimeString().slice(0, 8) + " " + text;
    element("log").prepend(line);
    while (element("log").children.length > 14) {
        element("log").lastChild.remove();
    }
}

function fill(id, texts, isCurrent) {
    element(id).replaceChildren(...texts.map(function (text, index) {
        const line = document.createElement("li");
        line.textContent = text;
        line.className = isCurrent(index) ? "current" : "";
        return line;
    }));
}

function timeOf(seconds) {
    return new Date(seconds * 1000).toISOString().slice(11, 16);
}

function showChannel() {
    const channel = broadcast.currentChannel;
    element("channel").textContent = channel ? channel.name || channel.ccid : "No channel";
    element("ccid").textContent = channel ? channel.ccid : "";
    channelList = broadcast.getChannelConfig().channelList;
    const channels = Array.from({length: channelList.length}, (_, index) => channelList.item(index));
    fill("channels", channels.map((one, index) => (index + 1) + "  " + one.name),
         (index) => channel !== null && channels[index].ccid === channel.ccid);
}

function showProgrammes() {
    const programmes = broadcast.programmes;
    ["present", "following"].forEach(function (id, index) {
        const programme = programmes ? programmes[index] : null;
        element(id).textContent = programme ? timeOf(programme.startTime) + "  " + programme.name : "–";
    });
}

function showComponents() {
    const kinds = ["video", "audio", "subtitle"];
    const components = broadcast.getComponents(null) || [];
    const active = broadcast.getCurrentActiveComponents(null) || [];
    const all = Array.from({length: components.length}, (_, index) => components[index]);
    const activePids = Array.from({length: active.length}, (_, index) => active[index].pid);
    fill("components", all.map((one) => kinds[one.type] + "  PID " + one.pid + (one.language ? "  " + one.language : "") +
         (activePids.includes(one.pid) ? "  ●" : "")), () => false);
}

function showAll() {
    showChannel();
    showProgrammes();
    showComponents();
}

function toggleSubtitles() {
    const kind = broadcast.COMPONENT_TYPE_SUBTITLE;
    const active = broadcast.getCurrentActiveComponents(kind);
    if (active && active.length > 0) {
        broadcast.unselectComponent(kind);
    } else {
        broadcast.selectComponent(kind);
    }
}

function toggle() {
    isShown = !isShown;
    for (const id of ["panel", "events", "keys"]) {
        element(id).style.visibility = isShown ? "visible" : "hidden";
    }
}

function onKey(event) {
    const digit = event.keyCode - KeyEvent.VK_0;
    if (event.keyCode === KeyEvent.VK_RED) {
        toggle();
    } else if (event.keyCode === KeyEvent.VK_GREEN) {
        broadcast.nextChannel();
    } else if (event.keyCode === KeyEvent.VK_YELLOW) {
        toggleSubtitles();
    } else if (event.keyCode === KeyEvent.VK_BLUE) {
        application.destroyApplication();
    } else if (digit >= 1 && digit <= channelList.length) {
        broadcast.setChannel(channelList.item(digit - 1));
    } else {
        return;
    }
    event.preventDefault();
}

broadcast.addEventListener("PlayStateChange", (event) => log("PlayStateChange " + event.state));
broadcast.addEventListener("ChannelChangeSucceeded", (event) => log("ChannelChangeSucceeded " + event.channel.ccid));
broadcast.addEventListener("ChannelChangeError", (event) => log("ChannelChangeError " + event.errorState));
broadcast.addEventListener("ProgrammesChanged", () => log("ProgrammesChanged"));
broadcast.addEventListener("ComponentChanged", () => log("ComponentChanged"));
for (const name of ["PlayStateChange", "ChannelChangeSucceeded", "ProgrammesChanged", "ComponentChanged",
                    "SelectedComponentChanged"]) {
    broadcast.addEventListener(name, showAll);
}
broadcast.getChannelConfig().onChannelListUpdate = showAll;
document.addEventListener("keydown", onKey);

const keyset = application.privateData.keyset;
keyset.setValue(keyset.RED | keyset.GREEN | keyset.YELLOW | keyset.BLUE | keyset.NUMERIC);
broadcast.bindToCurrentChannel();
application.show();
showAll();
