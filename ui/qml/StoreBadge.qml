import Brivanta
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The store badge: a neutral store glyph beside "Download on the" / "App Store".
Button {
    id: root

    padding: Theme.padding
    implicitHeight: Math.max(50, implicitContentHeight + topPadding + bottomPadding)

    contentItem: Item {
        implicitWidth: badgeRow.implicitWidth
        implicitHeight: badgeRow.implicitHeight

        RowLayout {
            id: badgeRow
            anchors.centerIn: parent
            width: Math.min(implicitWidth, parent.width)
            spacing: 8

            SymbolImage {
                symbol: "apple.logo"
                Layout.preferredWidth: 40
                Layout.preferredHeight: 40
            }
            ColumnLayout {
                spacing: Theme.spacing
                Text {
                    text: qsTr("Download on the")
                    color: Theme.white
                    font.pixelSize: Theme.footnote
                    Layout.alignment: Qt.AlignHCenter
                }
                Text {
                    text: qsTr("App Store")
                    color: Theme.white
                    font.pixelSize: Theme.title2
                    font.weight: Font.Bold
                    Layout.alignment: Qt.AlignHCenter
                }
            }
        }
    }

    background: Rectangle {
        radius: Theme.sectionRadius
        color: Theme.opacity(Theme.black, 0.8)
    }
}
