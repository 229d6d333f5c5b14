// Gives <object> elements the members of their type. The members are accessors on the prototype of all <object>
// elements, which look at the element's type each time, so it does not matter how the type came to be: by markup, by
// the type property or by setAttribute. An element of another type keeps the engine's own members.

const types = create(null); // MIME type -> kind
const kindsInUse = new PrivateWeakMap(); // element -> {kind, object}: what stands behind it
const ownValues = new PrivateWeakMap(); // element -> values that a page gave our names before the element had its type
const exposed = create(null); // names that have their accessor
const engineMembers = create(null); // name -> the engine's descriptor

// What is behind an element of this type: its class has the public members, Class.events the events with their fields.
function defineType(mimeTypes, Class) {
    const kind = { Class, members: create(null), handlers: create(null) };
    mapped(getOwnPropertyNames(Class.prototype), (name) => {
        if (name !== "constructor") {
            kind.members[name] = memberOf(Class.prototype, name);
            exposeMember(name);
        }
    });
    each(Class.events || {}, (event) => {
        kind.handlers["on" + event] = event;
        exposeMember("on" + event);
    });
    mapped(mimeTypes, (mimeType) => {
        types[lowerCase(mimeType)] = kind;
    });
}

// The descriptor of a prototype's own member, without what a page adds to Object.prototype; undefined if there is none.
function memberOf(prototype, name) {
    const member = getOwnPropertyDescriptor(prototype, name);
    return member && setPrototypeOf(member, null);
}

function isDefinedType(mimeType) {
    return lowerCase(trimmed(safeText(mimeType))) in types;
}

// The type without parameters; empty if there is none.
const mimeTypeOf = (element) => trimmed(splitText(lowerCase(getAttribute(element, "type") || ""), ";")[0]);

function kindOf(element) {
    try {
        return types[mimeTypeOf(element)] || null;
    } catch (error) {
        return null; // no element: the prototype itself, for instance
    }
}

// {kind, object} of an element, or null for an element of another type. A type that has changed ends what was behind.
function behind(element) {
    const kind = kindOf(element);
    const known = kindsInUse.get(element);
    if (known && known.kind === kind) {
        return known;
    }
    if (known) {
        kindsInUse.delete(element);
        guarded(known.kind.Class.end || (() => {}), known.object);
    }
    if (!kind) {
        return null;
    }
    const made = { kind, object: new kind.Class(element) };
    kindsInUse.set(element, made);
    adoptOwnValues(element, made);
    return made;
}

// Handlers that were set before the type.
function adoptOwnValues(element, { kind }) {
    const values = ownValues.get(element) || {};
    each(values, (name, value) => {
        if (name in kind.handlers) {
            setHandler(element, kind.handlers[name], kind.Class.events[kind.handlers[name]], value);
            delete values[name];
        }
    });
}

function readMember(element, name, method) {
    const found = behind(element);
    if (found && name in found.kind.handlers) {
        return handlerOf(element, found.kind.handlers[name]);
    }
    const member = found && found.kind.members[name];
    if (member) {
        return member.get
            ? apply(member.get, found.object, [])
            : typeof member.value === "function"
            ? method
            : member.value;
    }
    const values = ownValues.get(element);
    if (values && name in values) {
        return values[name];
    }
    const engine = engineMembers[name];
    return engine ? (engine.get ? apply(engine.get, element, []) : engine.value) : undefined;
}

function writeMember(element, name, value) {
    const found = behind(element);
    if (found && name in found.kind.handlers) {
        setHandler(element, found.kind.handlers[name], found.kind.Class.events[found.kind.handlers[name]], value);
        return;
    }
    const member = found && found.kind.members[name];
    const engine = engineMembers[name];
    if (member) {
        if (member.set) {
            apply(member.set, found.object, [value]);
        }
    } else if (engine && engine.set) {
        apply(engine.set, element, [value]);
    } else {
        if (!ownValues.get(element)) {
            ownValues.set(element, create(null));
        }
        ownValues.get(element)[name] = value;
    }
}

function exposeMember(name) {
    const prototype = HTMLObjectElement.prototype;
    const present = memberOf(prototype, name);
    if (exposed[name]) {
        return;
    }
    exposed[name] = true;
    engineMembers[name] = present;
    const method = {
        [name](...values) {
            const found = behind(this);
            const member = found && found.kind.members[name];
            if (!member || typeof member.value !== "function") {
                throw new TypeError(name + " is not a method of this object");
            }
            return apply(member.value, found.object, values);
        },
    }[name];
    defineProperty(prototype, name, {
        get() {
            return readMember(this, name, method);
        },
        set(value) {
            writeMember(this, name, value);
        },
        configurable: true,
        enumerable: present ? present.enumerable : false,
    });
}
