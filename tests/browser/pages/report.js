// Reports a value to the test: a line of the console.
"use strict";
function report(name, value) {
    console.log(name + " " + (typeof value === "string" ? value : JSON.stringify(value)));
}
