import Brivanta
import QtQuick

// The store badge: a neutral store glyph beside "Download on the" / "App Store".
BaseButton {
    id: root

    text: qsTr("Download on the") + " " + qsTr("App Store")
    radius: Theme.sectionRadius
    implicitHeight: Math.max(50, implicitContentHeight + topPadding + bottomPadding)

    // Ids inside the content item would keep it from being deferred, so the face is a component.
    component Face: Item {
        implicitWidth: 48 + Math.max(upper.implicitWidth, lower.implicitWidth)
        implicitHeight: Math.max(40, words.implicitHeight)

        SymbolImage {
            symbol: "apple.logo"
            x: words.x - 48
            width: 40
            height: 40
            anchors.verticalCenter: parent.verticalCenter
        }
        Column {
            id: words
            x: 48 + (parent.width - 48 - width) / 2
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.spacing

            Text {
                id: upper
                anchors.horizontalCenter: parent.horizontalCenter
                text: qsTr("Download on the")
                color: Theme.white
                font.pixelSize: Theme.footnote
            }
            Text {
                id: lower
                anchors.horizontalCenter: parent.horizontalCenter
                text: qsTr("App Store")
                color: Theme.white
                font.pixelSize: Theme.title2
                font.weight: Font.Bold
            }
        }
    }

    contentItem: Face {}
}
