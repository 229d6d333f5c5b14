// DOM events of the objects, and their handler properties (onPlayStateChange).

const handlers = new PrivateWeakMap(); // target -> handlers by event name

// Sets what an on... property has. The handler gets the event's fields as arguments, in the order of `fields`.
function setHandler(target, event, fields, handler) {
    let own = handlers.get(target);
    if (!own) {
        handlers.set(target, (own = create(null)));
    }
    const isNew = !(event in own);
    own[event] = typeof handler === "function" ? handler : null;
    if (isNew) {
        listenTo(target, event, (happened) => {
            if (own[event]) {
                apply(
                    own[event],
                    target,
                    mapped(fields, (field) => happened[field])
                );
            }
        });
    }
}

function handlerOf(target, event) {
    const own = handlers.get(target);
    return (own && own[event]) || null;
}

// An event with the fields as its properties.
function makeEvent(name, fields) {
    const event = new DomEvent(name);
    defineFields(event, fields);
    return event;
}

function fireNow(target, name, fields) {
    dispatch(target, makeEvent(name, fields));
}

// Tells the target's handler and listeners, after the page's script that runs now.
function fireLater(target, name, fields = {}) {
    later(() => fireNow(target, name, fields));
}

// Gives a class of event targets its handler properties: {PlayStateChange: ["state", "error"]}.
function defineHandlers(Target, events) {
    each(events, (event, fields) => {
        defineProperty(Target.prototype, "on" + event, {
            get() {
                return handlerOf(this, event);
            },
            set(handler) {
                setHandler(this, event, fields, handler);
            },
            configurable: true,
            enumerable: true,
        });
    });
}
