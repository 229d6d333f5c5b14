// The script that gives pages their broadcast objects.
#ifndef TVBROWSER_DOM_SCRIPT_H
#define TVBROWSER_DOM_SCRIPT_H

namespace tvbrowser {

/// A JavaScript expression: one function of (native, setup), to be called in a page before any script of the page.
extern const char* const kDomScript;

}  // namespace tvbrowser

#endif
