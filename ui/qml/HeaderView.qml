import Brivanta
import QtQuick
import QtQuick.Layouts
import Qt5Compat.GraphicalEffects

// The main screen's title block: the raised hand, the app's name and its promise.
Item {
    id: root

    implicitWidth: column.implicitWidth + 2 * Theme.padding
    implicitHeight: column.implicitHeight + 2 * Theme.padding

    ColumnLayout {
        id: column
        anchors.fill: parent
        anchors.margins: Theme.padding
        spacing: Theme.spacing

        SymbolImage {
            objectName: "headerSymbol"
            symbol: "hand.raised.fill"
            // Stretched into its frame, not fitted.
            fillMode: Image.Stretch
            Layout.preferredWidth: 80
            Layout.preferredHeight: 90
            Layout.alignment: Qt.AlignHCenter
            layer.enabled: GraphicsInfo.api !== GraphicsInfo.Software
            layer.effect: DropShadow {
                radius: 10
                samples: 21
                color: Theme.shadow
            }
        }
        Text {
            text: qsTr("Brivanta")
            color: Theme.white
            font.pixelSize: Theme.largeTitle
            font.weight: Font.Bold
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        Text {
            text: qsTr("Block ads, trackers, popups, and cookie notices")
            color: Theme.opacity(Theme.white, 0.8)
            font.pixelSize: Theme.body
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
    }
}
