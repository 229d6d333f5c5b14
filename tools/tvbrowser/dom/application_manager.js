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

    // Null for a document that no frame of the page shows.
    getOwnerApplication(ofDocument) {
        return isShown(ofDocument) ? ownApplication : null;
    }
}

defineType(["application/oipfApplicationManager"], ApplicationManager);
