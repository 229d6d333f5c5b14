// Array-like collections of the interface: length, item(index) and collection[index].

class Collection {
    #items;

    constructor(items) {
        this.#items = items;
        for (let index = 0; index < items.length; ++index) {
            defineField(this, index, items[index]);
        }
    }

    get length() {
        return this.#items.length;
    }

    item(index) {
        return nameOfOwn(this.#items, index) ? this.#items[index] : undefined;
    }

    *[Symbol.iterator]() {
        for (let index = 0; index < this.#items.length; ++index) {
            yield this.#items[index];
        }
    }
}
