// Events from outside the page, and tasks of the page's main loop.

const signalListeners = create(null);

// The listener is called with the value of each event of this name, in the order of registration.
function onSignal(name, listener) {
    signalListeners[name] = signalListeners[name] || [];
    append(signalListeners[name], listener);
}

native.listen((name, value) => {
    const listeners = signalListeners[name] || [];
    for (let index = 0; index < listeners.length; ++index) {
        guarded(listeners[index], value);
    }
});

const call = (name, argument = null) => native.call(name, argument);

// As call(); gives `otherwise` where the call is refused.
function tryCall(name, argument, otherwise) {
    try {
        return native.call(name, argument);
    } catch (error) {
        native.log(name + ": " + safeText(error));
        return otherwise;
    }
}

// Numbers of what a document asks for begin with this. No two documents choose the same.
const firstNumber = () => floor(random() * 2 ** 40);

// Runs tasks one after another once the page's own script has returned: what a method causes is told after the method.
// A message port, because a page's timers are slowed down when they nest or while the page is hidden.
const later = (() => {
    const tasks = [];
    let first = 0;
    const { port1, port2 } = new MessageChannel();
    const post = uncurry(MessagePort.prototype.postMessage);
    port1.onmessage = () => {
        const task = tasks[first];
        tasks[first] = undefined;
        if (++first === tasks.length) {
            tasks.length = first = 0;
        }
        guarded(task);
    };
    return (task) => {
        append(tasks, task);
        post(port2, null);
    };
})();
