import Brivanta
import QtQuick
import QtQuick.Layouts
import Qt5Compat.GraphicalEffects

// "Share App" and "Rate App", side by side.
RowLayout {
    id: root

    spacing: Theme.spacing

    component RowButton: Item {
        id: button

        property string symbol
        property string title
        property color background
        property color foreground
        signal clicked

        implicitWidth: label.implicitWidth + 2 * Theme.padding
        implicitHeight: label.implicitHeight + 2 * Theme.padding
        Layout.fillWidth: true

        Accessible.role: Accessible.Button
        Accessible.name: title
        Accessible.onPressAction: clicked()

        Rectangle {
            anchors.fill: parent
            radius: Theme.buttonRadius
            color: button.background
            layer.enabled: GraphicsInfo.api !== GraphicsInfo.Software
            layer.effect: DropShadow {
                radius: 5
                samples: 11
                color: Theme.shadow
            }
        }
        RowLayout {
            id: label
            anchors.centerIn: parent
            width: Math.min(implicitWidth, parent.width - 2 * Theme.padding)
            spacing: Theme.spacing

            SymbolImage {
                symbol: button.symbol
                color: button.foreground
                Layout.preferredWidth: Theme.title
                Layout.preferredHeight: Theme.title
            }
            Text {
                objectName: "rowButtonTitle"
                text: button.title
                color: button.foreground
                font.pixelSize: Theme.title3
                wrapMode: Text.Wrap
                Layout.fillWidth: true
            }
        }
        MouseArea {
            anchors.fill: parent
            onClicked: button.clicked()
        }
    }

    RowButton {
        objectName: "shareButton"
        symbol: "square.and.arrow.up.fill"
        title: qsTr("Share App")
        background: Theme.blue
        foreground: Theme.white
        onClicked: SupportActions.shareApp()
    }
    RowButton {
        objectName: "rateButton"
        symbol: "star.fill"
        title: qsTr("Rate App")
        background: Theme.yellow
        foreground: Theme.black
        onClicked: SupportActions.rateApp()
    }
}
