import Brivanta
import QtQuick
import QtQuick.Layouts

// What the app does not do with the user's traffic.
Item {
    id: root

    implicitWidth: column.implicitWidth + 2 * Theme.padding
    implicitHeight: column.implicitHeight + 2 * Theme.padding

    BlurView {
        anchors.fill: parent
        radius: Theme.cardRadius
    }

    ColumnLayout {
        id: column
        anchors.fill: parent
        anchors.margins: Theme.padding
        spacing: 10

        CardHeaderRow {
            symbol: "lock.shield.fill"
            title: qsTr("Privacy Policy")
            Layout.alignment: Qt.AlignHCenter
        }
        Text {
            text: qsTr("This app does not log IP addresses, and all queries are encrypted with DNS over HTTPS.")
            color: Theme.white
            font.pixelSize: Theme.subheadline
            horizontalAlignment: Text.AlignLeft
            wrapMode: Text.Wrap
            Layout.fillWidth: true
            Layout.margins: Theme.padding
        }
    }
}
