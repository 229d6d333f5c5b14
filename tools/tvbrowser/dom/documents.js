// Documents of HbbTV's own type are XHTML. To the engine they are any XML, which differs in one thing: the elements that
// a page makes by name alone would be none of HTML.

const { apply } = Reflect;
const { createElement: makeOfEngine, createElementNS: makeInNamespace } = Document.prototype;
const { get: contentTypeOf } = Object.getOwnPropertyDescriptor(Document.prototype, "contentType");
const { toLowerCase } = String.prototype;

const isHbbTvDocument = (ofDocument) =>
    apply(toLowerCase, apply(contentTypeOf, ofDocument, []), []) === "application/vnd.hbbtv.xhtml+xml";

const { createElement } = {
    createElement(name) {
        return arguments.length > 0 && isHbbTvDocument(this)
            ? apply(makeInNamespace, this, ["http://www.w3.org/1999/xhtml", name])
            : apply(makeOfEngine, this, arguments);
    },
};
Document.prototype.createElement = createElement;
