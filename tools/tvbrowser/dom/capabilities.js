// application/oipfCapabilities: what the set can do, as XML and by name.

const tunerNames = {
    10: "ID_DVB_C",
    11: "ID_DVB_S",
    12: "ID_DVB_T",
    14: "ID_DVB_C2",
    15: "ID_DVB_S2",
    16: "ID_DVB_T2",
};
const baseProfile = "OITF_HD_UIPROF";

const parseXml = uncurry(DOMParser.prototype.parseFromString);
const XmlParser = DOMParser;

// The kinds of reception of the channels that are known.
function tuners() {
    const found = [];
    mapped(allChannels(), (channel) => {
        const name = tunerNames[channelFacts.get(channel).idType];
        if (name && those(found, (other) => other === name).length === 0) {
            append(found, name);
        }
    });
    return found;
}

// The options of the profile's name: reception, and programmes from present/following and schedule.
const options = () => {
    const names = mapped(tuners(), (name) => part(name, "ID_".length));
    mapped(["META_EIT", "META_SI"], (name) => append(names, name));
    if (canPlay("video/mp4")) {
        append(names, "TRICKMODE");
    }
    return names;
};

const mediaProfile = (element, name, type) =>
    canPlay(type) ? "<" + element + ' name="' + name + '" type="' + type + '"/>' : "";

function describeSet() {
    const systems = mapped(
        setup.capabilities.drm || [],
        (id) => '<drm DRMSystemID="urn:dvb:casystemid:' + id + '">TS</drm>'
    );
    return (
        '<profilelist><ui_profile name="' +
        joined(both([baseProfile], options()), "+") +
        '"><ext>' +
        "<colorkeys>true</colorkeys>" +
        '<video_broadcast type="' +
        joined(tuners(), " ") +
        '">true</video_broadcast>' +
        '<parentalcontrol schemes="' +
        ageScheme +
        '">true</parentalcontrol>' +
        "<extendedAVControl>true</extendedAVControl>" +
        '<clientMetadata type="dvb-si">true</clientMetadata>' +
        joined(systems, "") +
        "</ext></ui_profile>" +
        mediaProfile("video_profile", "MP4_AVC_HD_25_HEAAC", "video/mp4") +
        mediaProfile("audio_profile", "MPEG1_L3", "audio/mpeg") +
        mediaProfile("audio_profile", "MP4_HEAAC", "audio/mp4") +
        "</profilelist>"
    );
}

class Capabilities {
    get xmlCapabilities() {
        return parseXml(new XmlParser(), describeSet(), "application/xml");
    }
    get extraSDVideoDecodes() {
        return 0;
    }
    get extraHDVideoDecodes() {
        return 0;
    }
    get extraUHDVideoDecodes() {
        return 0;
    }

    // A profile's name with or without options: "OITF_HD_UIPROF+DVB_C", "+DVB_C".
    hasCapability(profileName) {
        const names = those(splitText(trimmed(safeText(profileName)), "+"), (name) => name !== "");
        const known = both([baseProfile], options());
        const unknown = those(names, (name) => those(known, (other) => other === name).length === 0);
        return names.length > 0 && unknown.length === 0;
    }
}

defineType(["application/oipfCapabilities"], Capabilities);
