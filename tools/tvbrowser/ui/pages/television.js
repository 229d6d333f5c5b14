// The page for people: shows the television's screen and log, and presses keys of its remote control.
"use strict";

const rows = [
    ["1"], ["2"], ["3"], ["4"], ["5"], ["6"], ["7"], ["8"], ["9"], [null], ["0"], [null],
    ["RED", "", "colour"], ["GREEN", "", "colour"], ["YELLOW", "", "colour"], ["BLUE", "", "colour"],
    ["BACK", "back"], ["UP", "▲"], ["EXIT", "exit"],
    ["LEFT", "◀"], ["ENTER", "OK"], ["RIGHT", "▶"],
    ["INFO", "info"], ["DOWN", "▼"], [null],
    ["REWIND", "«"], ["PLAY_PAUSE", "play"], ["FAST_FWD", "»"],
    ["CHANNEL_UP", "CH +"], ["STOP", "stop"], ["CHANNEL_DOWN", "CH −"],
];
const keyboard = {
    ArrowUp: "UP", ArrowDown: "DOWN", ArrowLeft: "LEFT", ArrowRight: "RIGHT", Enter: "ENTER", Backspace: "BACK",
    Escape: "EXIT", r: "RED", g: "GREEN", y: "YELLOW", b: "BLUE", i: "INFO", PageUp: "CHANNEL_UP",
    PageDown: "CHANNEL_DOWN", " ": "PLAY_PAUSE",
};
let lineCount = 0;

function element(id) {
    return document.getElementById(id);
}

function send(path, value) {
    return fetch(path, {method: "POST", body: value});
}

function remoteControl() {
    for (const [name, label, kind] of rows) {
        const button = document.createElement("button");
        button.textContent = label === undefined ? name : label;
        button.className = name === null ? "empty" : name + " " + (kind || "");
        button.title = name || "";
        button.addEventListener("click", () => send("key", name));
        element("remote").append(button);
    }
}

function showApplications(state) {
    const items = state.applications.map(function (application) {
        const item = document.createElement("li");
        const isRunning = state.running !== null && state.running.id === application.id;
        const button = document.createElement("button");
        button.textContent = isRunning ? "start again" : "start";
        button.addEventListener("click", () => send("start", application.id));
        const text = document.createElement("span");
        text.textContent = (application.name || application.id) + " – " + application.url;
        text.className = isRunning ? "running" : "";
        item.append(button, text);
        return item;
    });
    element("applications").replaceChildren(...items);
    if (items.length === 0) {
        element("applications").textContent = "The presented service signals none.";
    }
}

function showChannel(state) {
    const isPresented = (one) => state.channel && one.onid === state.channel.onid && one.tsid === state.channel.tsid &&
        one.sid === state.channel.sid;
    const channel = state.channels.find(isPresented);
    element("channel").textContent = !state.connected ? "No DTV service" : channel ? channel.name : "No channel";
    element("programme").textContent = state.programmes.length === 0 ? "" : state.programmes[0].name;
}

function showLines(state) {
    const log = element("log");
    const atEnd = log.scrollTop + log.clientHeight >= log.scrollHeight - 4;
    for (const text of state.lines) {
        const line = document.createElement("li");
        line.textContent = text;
        log.append(line);
    }
    while (log.children.length > 500) {
        log.firstChild.remove();
    }
    if (atEnd) {
        log.scrollTop = log.scrollHeight;
    }
    lineCount = state.lineCount;
}

/// The lists are made anew only when they differ, so that a click never meets a list that is being replaced.
let shown = "";
let shownScreen = -1;
async function follow() {
    try {
        const state = await (await fetch("state?after=" + lineCount)).json();
        if (state.lineCount < lineCount) {
            element("log").replaceChildren(); // another television: all of its lines come with the next answer
            lineCount = 0;
            shownScreen = -1;
        } else {
            showLines(state);
        }
        const lists = JSON.stringify([state.applications, state.running, state.channels, state.channel, state.programmes,
                                      state.connected]);
        if (lists !== shown) {
            shown = lists;
            showApplications(state);
            showChannel(state);
        }
        if (state.screen !== shownScreen) {
            const picture = new Image();
            picture.src = "screen.png?" + Date.now();
            await picture.decode();
            element("screen").src = picture.src;
            shownScreen = state.screen;
        }
    } catch (error) {
        element("channel").textContent = "The television has gone.";
    }
    setTimeout(follow, 200);
}

document.addEventListener("keydown", function (event) {
    const name = /^[0-9]$/.test(event.key) ? event.key : keyboard[event.key];
    if (name !== undefined && !event.ctrlKey && !event.altKey && !event.metaKey) {
        event.preventDefault();
        send("key", name);
    }
});
remoteControl();
follow();
