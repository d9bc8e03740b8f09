import Brivanta
import QtQuick

// The card header: a symbol in the title-2 size beside a bold headline title, both white, centred as a
// pair in whatever width it is given; a title too long for it wraps.
Item {
    id: header

    property string symbol
    property string title

    implicitWidth: Theme.title2 + 8 + label.implicitWidth
    implicitHeight: Math.max(Theme.title2, label.implicitHeight)

    SymbolImage {
        symbol: header.symbol
        width: Theme.title2
        height: Theme.title2
        x: label.x - width - 8
        anchors.verticalCenter: parent.verticalCenter
    }
    Text {
        id: label
        text: header.title
        color: Theme.white
        font.pixelSize: Theme.headline
        font.weight: Font.Bold
        wrapMode: Text.Wrap
        width: Math.min(implicitWidth, header.width - Theme.title2 - 8)
        x: Theme.title2 + 8 + (header.width - Theme.title2 - 8 - width) / 2
        anchors.verticalCenter: parent.verticalCenter
    }
}
