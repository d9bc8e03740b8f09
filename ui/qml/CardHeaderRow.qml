import Brivanta
import QtQuick
import QtQuick.Layouts

// The card header: a symbol in the title-2 size beside a bold headline title, both white.
RowLayout {
    id: header

    property string symbol
    property string title

    spacing: 8

    SymbolImage {
        symbol: header.symbol
        Layout.preferredWidth: Theme.title2
        Layout.preferredHeight: Theme.title2
    }
    Text {
        text: header.title
        color: Theme.white
        font.pixelSize: Theme.headline
        font.weight: Font.Bold
        wrapMode: Text.Wrap
        Layout.fillWidth: true
    }
}
