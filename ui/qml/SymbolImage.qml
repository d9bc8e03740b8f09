import Brivanta
import QtQuick

// A system symbol, drawn from its vendored SVG in one colour (painted into the image, so the software
// renderer draws it too).
Image {
    property string symbol
    property color color: Theme.white

    source: symbol ? Symbols.image(symbol, color) : ""
    sourceSize.width: width
    sourceSize.height: height
    fillMode: Image.PreserveAspectFit
}
