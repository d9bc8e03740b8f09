import Brivanta
import QtQuick

// The frame both promotion cards share: title, centred description and the store badge.
Item {
    id: root

    property string title
    property string description

    signal badgeClicked

    implicitWidth: 250 + 2 * Theme.padding
    implicitHeight: column.implicitHeight + 2 * Theme.padding

    Rectangle {
        anchors.fill: parent
        radius: Theme.sectionRadius
        color: Theme.opacity(Theme.black, 0.2)
    }

    Column {
        id: column
        x: Theme.padding
        y: Theme.padding
        width: root.width - 2 * Theme.padding
        spacing: 10

        EmojiLabel {
            objectName: "promoTitle"
            width: column.width
            plainText: root.title
            font.pixelSize: Theme.headline
            font.weight: Theme.headlineWeight
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
        Text {
            objectName: "promoDescription"
            x: 10
            width: column.width - 20
            text: root.description
            color: Theme.opacity(Theme.white, 0.8)
            font.pixelSize: Theme.subheadline
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
        StoreBadge {
            objectName: "storeBadge"
            width: Math.min(column.width, 250)
            anchors.horizontalCenter: parent.horizontalCenter
            onClicked: root.badgeClicked()
        }
    }
}
