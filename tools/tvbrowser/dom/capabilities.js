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
    if (drmSystems().length > 0) {
        append(names, "DRM");
    }
    return names;
};

// The profiles of media that the engine plays: OIPF's name, the container's type, the transport if it is not plain HTTP.
const avcAndHeAac = '; codecs="avc1.640028,mp4a.40.5"';
const mediaProfiles = [
    { element: "audio_profile", name: "MPEG1_L3", type: "audio/mpeg" },
    { element: "audio_profile", name: "MP4_HEAAC", type: "audio/mp4", needs: ['audio/mp4; codecs="mp4a.40.5"'] },
    { element: "video_profile", name: "TS_AVC_SD_25_HEAAC", type: "video/mpeg", needs: ["video/mp4" + avcAndHeAac] },
    { element: "video_profile", name: "TS_AVC_HD_25_HEAAC", type: "video/mpeg", needs: ["video/mp4" + avcAndHeAac] },
    { element: "video_profile", name: "MP4_AVC_SD_25_HEAAC", type: "video/mp4", needs: ["video/mp4" + avcAndHeAac] },
    { element: "video_profile", name: "MP4_AVC_HD_25_HEAAC", type: "video/mp4", needs: ["video/mp4" + avcAndHeAac] },
    {
        element: "video_profile",
        name: "MP4_AVC_HD_25_HEAAC",
        type: "video/mp4",
        transport: "dash",
        needs: ["video/mp4" + avcAndHeAac, "application/dash+xml"],
    },
];

function describeMedia() {
    const played = those(mediaProfiles, ({ type, needs = [] }) => {
        const missing = those(both([type], needs), (needed) => !canPlay(needed));
        return missing.length === 0;
    });
    const texts = mapped(played, ({ element, name, type, transport }) => {
        const by = transport ? '" transport="' + transport : "";
        return "<" + element + ' name="' + name + '" type="' + type + by + '"/>';
    });
    return joined(texts, "");
}

// What the screen shows: the engine draws 60 frames a second.
const describeScreen = () =>
    '<video_display_format width="' +
    setup.capabilities.width +
    '" height="' +
    setup.capabilities.height +
    '" frame_rate="60" bit_depth="8" colorimetry="bt709"/>';

const drmSystems = () => setup.capabilities.drm || [];

function describeSet() {
    const systems = mapped(
        drmSystems(),
        (id) => '<drm DRMSystemID="urn:dvb:casystemid:' + id + '">TS</drm>'
    );
    return (
        '<profilelist><ui_profile name="' +
        joined(both([baseProfile], options()), "+") +
        '"><ext>' +
        "<colorkeys>true</colorkeys>" +
        '<video_broadcast type="' +
        joined(tuners(), " ") +
        '" scaling="arbitrary" minSize="0">true</video_broadcast>' +
        '<parentalcontrol schemes="' +
        ageScheme +
        '">true</parentalcontrol>' +
        "<extendedAVControl>true</extendedAVControl>" +
        '<clientMetadata type="dvb-si">true</clientMetadata>' +
        "<html5_media>true</html5_media>" +
        joined(systems, "") +
        "</ext></ui_profile>" +
        describeMedia() +
        describeScreen() +
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
