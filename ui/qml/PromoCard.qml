import Brivanta
import QtQuick
import QtQuick.Layouts

// The frame both promotion cards share: title, centred description and the store badge.
Item {
    id: root

    property string title
    property string description

    signal badgeClicked

    implicitWidth: column.implicitWidth + 2 * Theme.padding
    implicitHeight: column.implicitHeight + 2 * Theme.padding

    Rectangle {
        anchors.fill: parent
        radius: Theme.sectionRadius
        color: Theme.opacity(Theme.black, 0.2)
    }

    ColumnLayout {
        id: column
        anchors.fill: parent
        anchors.margins: Theme.padding
        spacing: 10

        EmojiLabel {
            objectName: "promoTitle"
            plainText: root.title
            font.pixelSize: Theme.headline
            font.weight: Theme.headlineWeight
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        Text {
            objectName: "promoDescription"
            text: root.description
            color: Theme.opacity(Theme.white, 0.8)
            font.pixelSize: Theme.subheadline
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Layout.fillWidth: true
            Layout.leftMargin: 10
            Layout.rightMargin: 10
        }
        StoreBadge {
            objectName: "storeBadge"
            Layout.fillWidth: true
            Layout.maximumWidth: 250
            Layout.alignment: Qt.AlignHCenter
            onClicked: root.badgeClicked()
        }
    }
}
