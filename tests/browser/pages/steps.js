// For pages that exercise an object: what they do is the case that the query names.
"use strict";

// Runs the case; what goes wrong is reported too.
function run(cases) {
    const name = location.search.slice(1);
    Promise.resolve().then(() => cases[name]()).catch((error) => report("error", String(error)));
}

// The value once it is there.
function until(value) {
    return new Promise((resolve) => {
        const look = () => {
            const found = value();
            if (found) {
                resolve(found);
            } else {
                setTimeout(look, 10);
            }
        };
        look();
    });
}

// Reports the object's events in their order, with the fields that they have.
function reportEvents(object, names, fields) {
    names.forEach((name) => {
        object.addEventListener(name, (event) => {
            const values = fields.filter((field) => event[field] !== undefined).map((field) => {
                const value = event[field];
                return value && typeof value === "object" ? value.ccid || value.name || "object" : String(value);
            });
            report("event", [name].concat(values).join(" "));
        });
    });
}

// What the call throws, or its value.
function outcome(call) {
    try {
        return call();
    } catch (error) {
        return error.name;
    }
}

const byId = (id) => document.getElementById(id);
