// oipfObjectFactory: makes the elements of each type, and says which types there are.

const creators = {
    createVideoBroadcastObject: "video/broadcast",
    createVideoMpegObject: "video/mp4",
    createApplicationManagerObject: "application/oipfApplicationManager",
    createCapabilitiesObject: "application/oipfCapabilities",
    createConfigurationObject: "application/oipfConfiguration",
    createDrmAgentObject: "application/oipfDrmAgent",
    createParentalControlManagerObject: "application/oipfParentalControlManager",
    createSearchManagerObject: "application/oipfSearchManager",
};

class ObjectFactory {
    isObjectSupported(mimeType) {
        const name = lowerCase(trimmed(safeText(mimeType)));
        return isDefinedType(name) && (!isMediaType(name) || canPlay(name));
    }
    createChannelConfig() {
        requireBroadcast();
        return theChannelConfig();
    }
}
each(creators, (name, mimeType) => {
    const create = {
        [name]() {
            const element = createElement("object");
            setAttribute(element, "type", mimeType);
            return element;
        },
    }[name];
    defineProperty(ObjectFactory.prototype, name, { value: create, writable: true, configurable: true });
});

defineGlobal("oipfObjectFactory", new ObjectFactory());
