// Queries: conditions on programmes, which can be combined.

const comparisons = {
    0: (value, wanted) => value === wanted,
    1: (value, wanted) => value !== wanted,
    2: (value, wanted) => value > wanted,
    3: (value, wanted) => value >= wanted,
    4: (value, wanted) => value < wanted,
    5: (value, wanted) => value <= wanted,
    6: (value, wanted) => contains(lowerCase(safeText(value)), lowerCase(safeText(wanted))),
};
const contains = uncurry(String.prototype.includes);

// Fields that a query may name, in lower case.
const searchFields = {
    "programme.starttime": (known) => known.startTime,
    "programme.name": (known) => known.name,
    "programme.programmeid": programmeIdOf,
};

const queryTests = new PrivateWeakMap(); // Query -> whether it holds for a programme

class Query {
    constructor(test) {
        queryTests.set(this, test);
    }
    and(query) {
        return combined(this, query, (one, other) => (known) => one(known) && other(known));
    }
    or(query) {
        return combined(this, query, (one, other) => (known) => one(known) || other(known));
    }
    not() {
        const test = queryTests.get(this);
        return new Query((known) => !test(known));
    }
}

function combined(one, other, combine) {
    if (!queryTests.get(other)) {
        throw new TypeError("not a Query");
    }
    return new Query(combine(queryTests.get(one), queryTests.get(other)));
}
