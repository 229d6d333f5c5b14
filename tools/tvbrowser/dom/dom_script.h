// The scripts that run in a page before any script of its own.
#ifndef TVBROWSER_DOM_SCRIPT_H
#define TVBROWSER_DOM_SCRIPT_H

namespace tvbrowser {

/// A JavaScript expression: one function of (native, setup) that gives a page its broadcast objects.
extern const char* const kDomScript;
/// A JavaScript expression: one function of (name of the natives, their key, instance of the application, setup,
/// kDomScript) that begins a document.
extern const char* const kFirstScript;

}  // namespace tvbrowser

#endif
