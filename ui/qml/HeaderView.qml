import Brivanta
import QtQuick
import Qt5Compat.GraphicalEffects

// The main screen's title block: the raised hand, the app's name and its promise.
Item {
    id: root

    implicitWidth: Math.max(name.implicitWidth, promise.implicitWidth) + 2 * Theme.padding
    implicitHeight: column.implicitHeight + 2 * Theme.padding

    Column {
        id: column
        x: Theme.padding
        y: Theme.padding
        width: root.width - 2 * Theme.padding
        spacing: Theme.spacing

        SymbolImage {
            objectName: "headerSymbol"
            symbol: "hand.raised.fill"
            // Stretched into its frame, not fitted.
            fillMode: Image.Stretch
            width: 80
            height: 90
            anchors.horizontalCenter: parent.horizontalCenter
            layer.enabled: GraphicsInfo.api !== GraphicsInfo.Software
            layer.effect: DropShadow {
                radius: 10
                samples: 21
                color: Theme.shadow
            }
        }
        Text {
            id: name
            width: column.width
            text: qsTr("Brivanta")
            color: Theme.white
            font.pixelSize: Theme.largeTitle
            font.weight: Font.Bold
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
        Text {
            id: promise
            width: column.width
            text: qsTr("Block ads, trackers, popups, and cookie notices")
            color: Theme.opacity(Theme.white, 0.8)
            font.pixelSize: Theme.body
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
    }
}
