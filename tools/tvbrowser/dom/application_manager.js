// application/oipfApplicationManager: gives a page its application.

class ApplicationManager {
    static events = {
        LowMemory: [],
        ApplicationLoaded: ["appl"],
        ApplicationUnloaded: ["appl"],
        ApplicationLoadError: ["appl"],
        WidgetInstallation: [],
        WidgetUninstallation: [],
    };

    // Null for a document of somebody else.
    getOwnerApplication(ofDocument) {
        return ofDocument === document ? ownApplication : null;
    }
}

defineType(["application/oipfApplicationManager"], ApplicationManager);
