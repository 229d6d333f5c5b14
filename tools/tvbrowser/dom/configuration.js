// application/oipfConfiguration: what the viewer has chosen on the set, and what the set is.

const pageOrigin = location.origin;
const deviceId = () => tryCall("deviceId", { origin: pageOrigin }, undefined);

class Configuration {
    get preferredAudioLanguage() {
        return setup.configuration.preferredAudioLanguage;
    }
    get preferredSubtitleLanguage() {
        return setup.configuration.preferredSubtitleLanguage;
    }
    get preferredUILanguage() {
        return setup.configuration.preferredUILanguage;
    }
    get countryId() {
        return setup.configuration.countryId;
    }
    get subtitlesEnabled() {
        return true; // nobody can switch them off here, nor the audio description
    }
    get audioDescriptionEnabled() {
        return true;
    }
    get timeShiftSynchronized() {
        return false; // there is no time shift
    }

    // The networks of the terrestrial channels, in the order of the list; undefined without any.
    get dtt_network_ids() {
        const found = [];
        mapped(allChannels(), (channel) => {
            const { idType, known } = channelFacts.get(channel);
            const isNew = those(found, (other) => other === known.nid).length === 0;
            if ((idType === idTypes.ID_DVB_T || idType === idTypes.ID_DVB_T2) && known.nid !== null && isNew) {
                append(found, known.nid);
            }
        });
        return found.length > 0 ? found : undefined;
    }

    // Another one for each origin and each start of the set.
    get deviceId() {
        return deviceId();
    }
    // The callback is told whether the page may know deviceId. Every page may.
    requestAccessToDistinctiveIdentifier(callback) {
        if (typeof callback !== "function") {
            throw new TypeError("requestAccessToDistinctiveIdentifier takes a function");
        }
        later(() => callback(true));
    }
}

const powerStates = { OFF: 0, ON: 1, PASSIVE_STANDBY: 2, ACTIVE_STANDBY: 3, PASSIVE_STANDBY_HIBERNATE: 4 };

// The names are those of the user agent.
class LocalSystem {
    get deviceID() {
        return deviceId();
    }
    get systemReady() {
        return true;
    }
    get powerState() {
        return powerStates.ON;
    }
    get pvrEnabled() {
        return false;
    }
}
mapped(["vendorName", "modelName", "familyName", "softwareVersion", "hardwareVersion"], (name) => {
    const accessor = create(null);
    accessor.get = () => setup.configuration[name] || "";
    accessor.enumerable = accessor.configurable = true;
    defineProperty(LocalSystem.prototype, name, accessor);
});
defineFields(LocalSystem.prototype, powerStates);

const theConfiguration = new Configuration();
const theLocalSystem = new LocalSystem();

class ConfigurationObject {
    get configuration() {
        return theConfiguration;
    }
    get localSystem() {
        return theLocalSystem;
    }
}

defineType(["application/oipfConfiguration"], ConfigurationObject);
