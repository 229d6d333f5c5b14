// Programmes: present and following of the presented service, and those of the schedule.

const programmeIdTypes = { ID_TVA_CRID: 0, ID_DVB_EVENT: 1, ID_TVA_GROUP_CRID: 2 };

const programmeFacts = new PrivateWeakMap(); // Programme -> what it was made of

class Programme {
    constructor(known) {
        programmeFacts.set(this, known);
        defineFields(this, {
            name: known.name,
            longName: undefined,
            description: known.text,
            longDescription: known.longText,
            startTime: known.startTime === null ? undefined : known.startTime,
            duration: known.duration,
            channelID: ccidOf(known.channel),
            programmeID: programmeIdOf(known),
            programmeIDType: programmeIdTypes.ID_DVB_EVENT,
            parentalRatings: parentalRatingsOf(known.parentalRatings),
        });
    }

    get channel() {
        return channelByTriplet(programmeFacts.get(this).channel);
    }

    // The descriptors of the tag as texts with one character a byte, tag and length included.
    getSIDescriptors(descriptorTag, descriptorTagExtension, privateDataSpecifier) {
        const isAsked = (asked, found) => asked === undefined || asked === null || asked === -1 || asked === found;
        const wanted = those(
            programmeFacts.get(this).descriptors,
            (descriptor) =>
                descriptor.tag === descriptorTag &&
                isAsked(descriptorTagExtension, descriptor.extension) &&
                isAsked(privateDataSpecifier || null, descriptor.privateDataSpecifier)
        );
        return new Collection(
            mapped(wanted, ({ tag, bytes }) => letterOf(tag) + letterOf(bytes.length / 2) + bytesOfHex(bytes))
        );
    }
}
defineFields(Programme.prototype, programmeIdTypes);

// The DVB URL of an event.
function programmeIdOf({ channel, eventId }) {
    const hex = (number) => inBase(number, 16);
    return "dvb://" + hex(channel.onid) + "." + hex(channel.tsid) + "." + hex(channel.sid) + ";" + hex(eventId);
}

const programmesOf = (list) => new Collection(mapped(list, (known) => new Programme(known)));

// Present and following of a channel; none while the broadcast has not told them.
function presentAndFollowing(channel) {
    const facts = channelFacts.get(channel);
    return programmesOf(those(tryCall("programmes", null, []), (known) => sameTriplet(known.channel, facts)));
}

onSignal("programmesChanged", () => tellControlling("ProgrammesChanged"));
