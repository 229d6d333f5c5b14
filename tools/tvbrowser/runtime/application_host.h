// What the application manager acts through: the browser's view and the television around it.
// Threads: that of the manager.
// Blocks:  no operation may.
// Fails:   never. A page that does not load is told to the manager later, by loadFailed().
#pragma once

#include "application.h"

namespace tvbrowser {

/// No operation may call the manager before it returns.
class ApplicationHost {
public:
    ApplicationHost() = default;
    ApplicationHost(const ApplicationHost&) = delete;
    ApplicationHost& operator=(const ApplicationHost&) = delete;
    virtual ~ApplicationHost() = default;

    /// Loads the application's URL into a new page that has the application's visibility, in place of any other
    /// application.
    virtual void load(const RunningApplication& application) = 0;
    /// No application runs any more.
    virtual void unload() = 0;
    virtual void setVisible(bool isVisible) = 0;
    /// How the start of a broadcast-related application ended.
    virtual void reportStarted(bool hasStarted) = 0;
    /// Whether it is visible or broadcast-related has changed; its page is to be told.
    virtual void applicationChanged(const RunningApplication& application) = 0;
    virtual void log(const std::string& line) = 0;
};

}  // namespace tvbrowser
