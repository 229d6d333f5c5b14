// The style sheet that the television adds to pages. Any rule of a page goes before it.
// Threads: any.
// Blocks:  never.
// Fails:   never; a font that is not installed is replaced by the engine.
#pragma once

namespace tvbrowser {

/// The box of the objects, with or without a picture, is that of a replaced element. The fonts that HbbTV names are not
/// free, so others have their names (TS 102 796, clause 10.1.2).
constexpr const char* kUserStyle = R"(
object[type^='video/' i], object[type^='audio/' i], object[type='application/dash+xml' i] {
    display: inline-block; width: 300px; height: 150px;
}
@font-face { font-family: "Tiresias"; src: local("DejaVu Sans Condensed"), local("DejaVu Sans"); }
@font-face {
    font-family: "Tiresias"; font-weight: bold;
    src: local("DejaVu Sans Condensed Bold"), local("DejaVu Sans Bold");
}
@font-face { font-family: "Letter Gothic 12 Pitch"; src: local("DejaVu Sans Mono"); }
@font-face { font-family: "Letter Gothic 12 Pitch"; font-weight: bold; src: local("DejaVu Sans Mono Bold"); }
)";

}  // namespace tvbrowser
