// The schedule of all channels, for those who search it.
//
// The schedule is collected from the first search on. It is there once the broadcast has brought something, and then
// nothing new for a while; one that never stops to bring something, or never begins, does not keep a search waiting for
// ever.
const quietTime = 1500;
const longestWait = 10000;

const schedule = { isOpen: false, isCollected: false, quiet: 0, waiting: [] };

function whenCollected(action) {
    if (!schedule.isOpen) {
        schedule.isOpen = Boolean(tryCall("openSchedule", null, false));
        startTimer(scheduleCollected, longestWait);
    }
    if (schedule.isCollected) {
        later(action);
    } else {
        append(schedule.waiting, action);
    }
}

function restartQuietTime() {
    stopTimer(schedule.quiet);
    schedule.quiet = startTimer(scheduleCollected, quietTime);
}

function scheduleCollected() {
    stopTimer(schedule.quiet);
    schedule.isCollected = true;
    const { waiting } = schedule;
    schedule.waiting = [];
    mapped(waiting, (action) => later(action));
}

onSignal("scheduleChanged", () => {
    if (!schedule.isCollected) {
        restartQuietTime();
    }
});
