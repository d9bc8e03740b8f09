import Brivanta
import QtQuick
import Qt5Compat.GraphicalEffects

// "Share App" and "Rate App", side by side, each taking half of the row.
Item {
    id: root

    readonly property real buttonWidth: (width - Theme.spacing) / 2

    implicitWidth: 2 * Math.max(share.implicitWidth, rate.implicitWidth) + Theme.spacing
    implicitHeight: Math.max(share.implicitHeight, rate.implicitHeight)

    component RowButton: BaseButton {
        symbolSize: Theme.title
        font.pixelSize: Theme.title3
        shadowEffect: Component {
            DropShadow {
                radius: 5
                samples: 11
                color: Theme.shadow
            }
        }
    }

    RowButton {
        id: share
        objectName: "shareButton"
        width: root.buttonWidth
        height: root.height
        symbol: "square.and.arrow.up.fill"
        text: qsTr("Share App")
        fill: Theme.blue
        onClicked: SupportActions.shareApp()
    }
    RowButton {
        id: rate
        objectName: "rateButton"
        width: root.buttonWidth
        height: root.height
        x: root.buttonWidth + Theme.spacing
        symbol: "star.fill"
        text: qsTr("Rate App")
        fill: Theme.yellow
        foreground: Theme.black
        onClicked: SupportActions.rateApp()
    }
}
