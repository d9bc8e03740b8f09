import Brivanta
import QtQuick

// What the app does not do with the user's traffic.
Item {
    id: root

    implicitWidth: Math.max(header.implicitWidth, sentence.implicitWidth) + 2 * Theme.padding
    implicitHeight: column.implicitHeight + 2 * Theme.padding

    BlurView {
        anchors.fill: parent
        radius: Theme.cardRadius
    }

    Column {
        id: column
        x: Theme.padding
        y: Theme.padding
        width: root.width - 2 * Theme.padding
        spacing: 10

        CardHeaderRow {
            id: header
            objectName: "privacyHeader"
            width: column.width
            symbol: "lock.shield.fill"
            title: qsTr("Privacy Policy")
        }
        Text {
            id: sentence
            width: column.width
            padding: Theme.padding
            text: qsTr("This app does not log IP addresses, and all queries are encrypted with DNS over HTTPS.")
            color: Theme.white
            font.pixelSize: Theme.subheadline
            wrapMode: Text.Wrap
        }
    }
}
