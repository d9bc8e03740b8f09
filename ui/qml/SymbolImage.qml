import Brivanta
import QtQuick
import QtQuick.Controls.impl

// A system symbol, drawn from its vendored SVG and tinted (no shader: the software renderer draws it too).
IconImage {
    property string symbol

    source: Symbols.source(symbol)
    sourceSize: Qt.size(width, height)
    fillMode: Image.PreserveAspectFit
    color: Theme.white
}
