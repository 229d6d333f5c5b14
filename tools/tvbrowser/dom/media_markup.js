// Data in markup and by setAttribute is taken before the engine looks at it, and copies of pictures are taken out.
const watchMarkup = new MutationObserver((changes) => {
    for (let index = 0; index < changes.length; ++index) {
        const { target, addedNodes, type } = changes[index];
        if (type === "attributes") {
            adoptMedia(target);
        }
        for (let node = 0; node < addedNodes.length; ++node) {
            adoptMediaWithin(addedNodes[node]);
        }
    }
});
watchMarkup.observe(document, { childList: true, subtree: true, attributes: true, attributeFilter: ["data", "type"] });

const PageObject = HTMLObjectElement;
const PageElement = Element;

function adoptMediaWithin(node) {
    if (!(node instanceof PageElement)) {
        return;
    }
    removeCopies(node);
    adoptMedia(node);
    const found = elementsNamed(node, "object");
    for (let index = 0; index < found.length; ++index) {
        adoptMedia(found[index]);
    }
}

function adoptMedia(element) {
    const found = element instanceof PageObject ? behind(element) : null;
    if (found && found.kind.Class === AvControl) {
        AvControl.takeAttribute(found.object);
    }
}
