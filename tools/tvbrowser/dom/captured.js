// What the script uses of the language and of the document, taken before a page can replace any of it.

const { create, defineProperty, getOwnPropertyDescriptor, getOwnPropertyNames, setPrototypeOf } = Object;
const { apply } = Reflect;
const { isArray } = Array;
const makeText = String;
const makeNumber = Number;

// The method as a function of its object: uncurry(Map.prototype.get)(map, key).
const uncurry =
    (method) =>
    (self, ...values) =>
        apply(method, self, values);

const nameOfOwn = uncurry(Object.prototype.hasOwnProperty);
const lowerCase = uncurry(String.prototype.toLowerCase);
const trimmed = uncurry(String.prototype.trim);
const splitText = uncurry(String.prototype.split);
const part = uncurry(String.prototype.slice);
const codeAt = uncurry(String.prototype.charCodeAt);
const startsWith = uncurry(String.prototype.startsWith);
const inBase = uncurry(Number.prototype.toString);
const letterOf = String.fromCharCode;
const matchOf = uncurry(RegExp.prototype.exec);
const { floor, random, round } = Math;
const decodeUri = decodeURIComponent;

const getAttribute = uncurry(Element.prototype.getAttribute);
const setAttribute = uncurry(Element.prototype.setAttribute);
const removeAttribute = uncurry(Element.prototype.removeAttribute);
const elementsNamed = uncurry(Element.prototype.getElementsByTagName);
const createIn = uncurry(Document.prototype.createElementNS);
const createElement = (name) => createIn(document, "http://www.w3.org/1999/xhtml", name);
const boxOf = uncurry(Element.prototype.getBoundingClientRect);
const isAttached = uncurry(getOwnPropertyDescriptor(Node.prototype, "isConnected").get);
const viewOf = uncurry(getOwnPropertyDescriptor(Document.prototype, "defaultView").get);
const appendTo = uncurry(Node.prototype.appendChild);
const removeFrom = uncurry(Node.prototype.removeChild);
const parentOf = uncurry(getOwnPropertyDescriptor(Node.prototype, "parentNode").get);
const listenTo = uncurry(EventTarget.prototype.addEventListener);
const dispatch = uncurry(EventTarget.prototype.dispatchEvent);
const startTimer = setTimeout;
const stopTimer = clearTimeout;
const DomEvent = Event;
const DomException = DOMException;
const report = typeof reportError === "function" ? reportError : (error) => native.log(safeText(error));

// A copy of a class of the language that no page reaches, so that its methods stay what they are.
function privateCopy(Original) {
    class Copy extends Original {
        constructor(value) {
            super(value); // one made by the language would pass its arguments on by way of the page's iterators
        }
    }
    for (const name of getOwnPropertyNames(Original.prototype)) {
        if (name !== "constructor") {
            defineProperty(Copy.prototype, name, getOwnPropertyDescriptor(Original.prototype, name));
        }
    }
    setPrototypeOf(Copy.prototype, null);
    return Copy;
}

const PrivateMap = privateCopy(Map);
const PrivateWeakMap = privateCopy(WeakMap);
const PrivateWeakRef = privateCopy(WeakRef);

// Defines a property that pages see. What a page adds to Object.prototype takes no part in it.
function defineField(target, name, value, isWritable = false) {
    const field = create(null);
    field.value = value;
    field.enumerable = true;
    field.writable = field.configurable = isWritable;
    defineProperty(target, name, field);
}

// Appends to a list of ours.
function append(list, value) {
    defineField(list, list.length, value, true);
}

// The elements of a list for which `keep` holds.
function those(list, keep) {
    const kept = [];
    for (let index = 0; index < list.length; ++index) {
        if (keep(list[index], index)) {
            append(kept, list[index]);
        }
    }
    return kept;
}

// A list of what `change` makes of each element.
function mapped(list, change) {
    const made = [];
    for (let index = 0; index < list.length; ++index) {
        append(made, change(list[index], index));
    }
    return made;
}

const namesOf = Object.keys;

// Calls with name and value of each property of an object of ours; what a page adds to Object.prototype is not among
// them.
function each(object, action) {
    const names = namesOf(object);
    for (let index = 0; index < names.length; ++index) {
        action(names[index], object[names[index]]);
    }
}

function defineFields(target, fields, isWritable) {
    each(fields, (name, value) => defineField(target, name, value, isWritable));
}

// The elements of both lists.
function both(first, second) {
    const all = those(first, () => true);
    mapped(second, (value) => append(all, value));
    return all;
}

// The texts as one, with something between each two.
function joined(texts, between) {
    let all = "";
    mapped(texts, (text, index) => (all += (index > 0 ? between : "") + text));
    return all;
}

// The text of anything; a page's toString may throw.
function safeText(value) {
    try {
        return makeText(value);
    } catch (error) {
        return "";
    }
}

// The wrapped function never throws into the one who calls it; what goes wrong is reported as an error of the page is.
function guarded(action, ...values) {
    try {
        return apply(action, undefined, values);
    } catch (error) {
        report(error);
        return undefined;
    }
}
