// How the loads of media end. The engine tells a page that a medium cannot be played, and not why; and it goes on waiting
// for more when all bytes are there and are no medium.

const avErrors = { format: 0, connection: 1, unidentified: 2, corrupt: 4, notAvailable: 5 };
const mediaErrors = { 2: avErrors.connection, 3: avErrors.corrupt }; // MediaError.code
const patience = 5000; // ms until bytes that are all there must have turned out to be a medium
const longestNews = 1000; // ms that the end of a load may be told later than its consequence

const withoutFragment = (url) => splitText(url, "#")[0];

let watchedLoads = []; // {url, onSilence, end, onEnd}

// The loads of this URL, of which `end` says how the last has ended. Calls with an error if one has ended well, and the
// medium should have begun since.
function watchLoad(url, onSilence) {
    const watched = { url: withoutFragment(url), onSilence, end: null, onEnd: () => {} };
    append(watchedLoads, watched);
    return watched;
}
function forgetLoad(watched) {
    watchedLoads = those(watchedLoads, (other) => other !== watched);
}

onSignal("load", (end) => {
    const concerned = those(watchedLoads, ({ url }) => url === withoutFragment(end.url));
    mapped(concerned, (watched) => {
        watched.end = end;
        guarded(watched.onEnd);
        if (end.result === "whole") {
            startTimer(() => guarded(watched.onSilence, errorOfLoad(end)), patience);
        }
    });
});

// Why what was loaded is no medium. The engine itself cancels a load when the server refuses it, and takes no answer.
function errorOfLoad({ result, status, mimeType }) {
    if (result === "failed") {
        return avErrors.connection;
    }
    if (status === 0) {
        return avErrors.notAvailable;
    }
    const isMedia = startsWith(mimeType, "video/") || startsWith(mimeType, "audio/");
    return isMedia && !canPlay(mimeType) ? avErrors.format : avErrors.corrupt;
}

// Calls with the error of a medium that the engine has given up.
function whenErrorIsKnown(code, watched, action) {
    if (mediaErrors[code] !== undefined) {
        action(mediaErrors[code]);
        return;
    }
    let isTold = false;
    const tell = () => {
        if (!isTold) {
            isTold = true;
            action(watched.end ? errorOfLoad(watched.end) : avErrors.notAvailable);
        }
    };
    if (watched.end) {
        tell();
    } else {
        watched.onEnd = tell;
        startTimer(tell, longestNews);
    }
}
