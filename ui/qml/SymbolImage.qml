import Brivanta
import QtQuick

// A system symbol, drawn from its vendored SVG in one colour (painted into the image, so the software
// renderer draws it too).
Image {
    property string symbol
    property color color: Theme.white

    // Drawn once it has its size: a layout sizes it after it is made, and an image drawn before that
    // would be drawn at the drawing's natural size and again at the size shown.
    source: symbol && width > 0 && height > 0 ? Symbols.image(symbol, color) : ""
    sourceSize.width: width
    sourceSize.height: height
    fillMode: Image.PreserveAspectFit
}
