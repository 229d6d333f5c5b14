// application/oipfConfiguration: what the viewer has chosen on the set.

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
        return setup.configuration.subtitlesEnabled !== false;
    }
}

class LocalSystem {
    get vendorName() {
        return setup.configuration.vendorName || "";
    }
    get modelName() {
        return setup.configuration.modelName || "";
    }
    get softwareVersion() {
        return setup.configuration.softwareVersion || "";
    }
    get hardwareVersion() {
        return setup.configuration.hardwareVersion || "";
    }
}

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
