// application/oipfSearchManager: searches in the programmes of all channels.

const searchStates = { finished: 0, idle: 3, failed: 4 };
class SearchResults {
    #search;
    #found = [];
    #window = [];
    #offset = 0;

    constructor(search) {
        this.#search = search;
    }
    get length() {
        return this.#window.length;
    }
    get offset() {
        return this.#offset;
    }
    get totalSize() {
        return this.#found.length;
    }
    item(index) {
        return nameOfOwn(this.#window, index) ? this.#window[index] : undefined;
    }

    // Starts the search, if it has not ended yet; the event MetadataSearch tells when the window is there.
    getResults(offset, count) {
        return searchWork.get(this.#search).start(this, makeNumber(offset) | 0, makeNumber(count) | 0);
    }
    abort() {
        searchWork.get(this.#search).reset();
        return true;
    }
    update() {
        searchWork.get(this.#search).reset();
    }

    static show(results, found, offset, count) {
        for (let index = 0; index < results.#window.length; ++index) {
            delete results[index];
        }
        results.#found = found;
        results.#offset = offset;
        results.#window = those(found, (programme, at) => at >= offset && at < offset + count);
        for (let index = 0; index < results.#window.length; ++index) {
            defineField(results, index, results.#window[index], true);
        }
    }
}

const searchWork = new PrivateWeakMap(); // MetadataSearch -> SearchWork

// What a search does behind its public face.
class SearchWork {
    test = () => true;
    channels = []; // triplets; none: all
    found = null; // programmes, once the search has ended
    runs = 0; // a result of an earlier run is not wanted any more

    constructor(manager, search) {
        this.manager = manager;
        this.search = search;
        this.results = new SearchResults(search);
    }

    start(results, offset, count) {
        if (offset < 0 || count < 0) {
            return false;
        }
        const run = ++this.runs;
        whenCollected(() => {
            if (run === this.runs) {
                this.found = this.found || this.find();
                showResults(results, this.found, offset, count);
                this.tell(searchStates.finished);
            }
        });
        return true;
    }

    // Parameters have changed, or the results are not wanted: nothing is found yet.
    reset() {
        ++this.runs;
        if (this.found) {
            this.found = null;
            showResults(this.results, [], 0, 0);
        }
        this.tell(searchStates.idle);
    }

    // By channel in the order of the list, then by start time.
    find() {
        const found = [];
        mapped(allChannels(), (channel) => {
            const triplet = channelFacts.get(channel);
            if (this.channels.length > 0 && those(this.channels, (other) => sameTriplet(other, triplet)).length === 0) {
                return;
            }
            const { onid, tsid, sid } = triplet;
            const known = those(tryCall("schedule", { onid, tsid, sid }, []), this.test);
            mapped(known, (programme) => append(found, new Programme(programme)));
        });
        return found;
    }

    tell(searchState) {
        fireLater(this.manager, "MetadataSearch", { search: this.search, state: searchState });
    }
}

const showResults = SearchResults.show;
delete SearchResults.show;

class MetadataSearch {
    constructor(manager) {
        searchWork.set(this, new SearchWork(manager, this));
    }
    get searchTarget() {
        return 1; // programmes of the broadcast
    }
    get result() {
        return searchWork.get(this).results;
    }

    setQuery(query) {
        const test = query === null ? () => true : queryTests.get(query);
        if (!test) {
            throw new TypeError("not a Query");
        }
        const work = searchWork.get(this);
        work.test = test;
        work.reset();
    }
    // Adds a channel to those that are searched; null: all channels are.
    addChannelConstraint(channel) {
        const work = searchWork.get(this);
        if (channel === null) {
            work.channels = [];
        } else if (channelFacts.get(channel)) {
            append(work.channels, channelFacts.get(channel));
        } else {
            throw new TypeError("not a Channel");
        }
        work.reset();
    }
    createQuery(field, comparison, value) {
        const read = searchFields[lowerCase(safeText(field))];
        const compare = comparisons[comparison];
        if (!read || !compare) {
            throw new TypeError("no such field or comparison");
        }
        const wanted = read === searchFields["programme.starttime"] ? makeNumber(value) : safeText(value);
        return new Query((known) => compare(read(known), wanted));
    }
    // The channel's programmes that end after the time (seconds since 1970); null: from now on.
    findProgrammesFromStream(channel, startTime) {
        const work = searchWork.get(this);
        if (!channelFacts.get(channel)) {
            throw new TypeError("not a Channel");
        }
        work.channels = [channelFacts.get(channel)];
        const from = startTime === null || startTime === undefined ? null : makeNumber(startTime);
        work.test = ({ startTime: start, duration }) =>
            start !== null && (start >= timeOr(from) || start + duration > timeOr(from));
        work.reset();
    }
}

const clock = Date.now;
const inProgress = 4; // running_status: running

// A time, or what time the broadcast has: at least the start of the programme that is running.
function timeOr(time) {
    if (time !== null) {
        return time;
    }
    const running = those(tryCall("programmes", null, []), (known) => known.running === inProgress)[0];
    return running && running.startTime !== null ? running.startTime : floor(clock() / 1000);
}

class SearchManager {
    static events = { MetadataSearch: ["search", "state"] };

    #element;

    constructor(element) {
        this.#element = element;
    }
    getChannelConfig() {
        requireBroadcast();
        return theChannelConfig();
    }
    // Null for anything but programmes of the broadcast.
    createSearch(searchTarget) {
        requireBroadcast();
        return searchTarget === 1 ? new MetadataSearch(this.#element) : null;
    }
}

defineType(["application/oipfSearchManager"], SearchManager);
