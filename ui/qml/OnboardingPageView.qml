import Brivanta
import QtQuick
import QtQuick.Layouts

// One feature page: the symbol above centred text on a phone, beside leading text on a tablet. Only
// the idiom's layout is made.
Item {
    id: root

    property var page

    Loader {
        anchors.centerIn: parent
        sourceComponent: Device.isTablet ? tabletLayout : phoneLayout
    }

    Component {
        id: phoneLayout

        ColumnLayout {
            objectName: "phonePageLayout"
            width: root.width - 2 * Theme.padding
            spacing: 20

            SymbolImage {
                objectName: "pageSymbol"
                symbol: root.page ? root.page.imageName : ""
                Layout.preferredWidth: 100
                Layout.preferredHeight: 100
                Layout.alignment: Qt.AlignHCenter
            }
            Text {
                objectName: "pageTitle"
                text: root.page ? root.page.title : ""
                color: Theme.white
                font.pixelSize: Theme.largeTitle
                font.weight: Font.Bold
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                Layout.fillWidth: true
                Layout.leftMargin: 20
                Layout.rightMargin: 20
            }
            Text {
                objectName: "pageDescription"
                text: root.page ? root.page.description : ""
                color: Theme.opacity(Theme.white, 0.8)
                font.pixelSize: Theme.headline
                font.weight: Theme.headlineWeight
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                Layout.fillWidth: true
                Layout.leftMargin: 20
                Layout.rightMargin: 20
            }
        }
    }

    Component {
        id: tabletLayout

        RowLayout {
            objectName: "tabletPageLayout"
            width: root.width - 2 * Theme.padding
            spacing: 40

            SymbolImage {
                objectName: "pageSymbol"
                symbol: root.page ? root.page.imageName : ""
                Layout.preferredWidth: 150
                Layout.preferredHeight: 150
                Layout.alignment: Qt.AlignVCenter
            }
            ColumnLayout {
                spacing: 20
                Layout.fillWidth: true
                Layout.leftMargin: 20
                Layout.rightMargin: 20

                Text {
                    text: root.page ? root.page.title : ""
                    color: Theme.white
                    font.pixelSize: Theme.largeTitle
                    font.weight: Font.Bold
                    wrapMode: Text.Wrap
                    Layout.fillWidth: true
                }
                Text {
                    text: root.page ? root.page.description : ""
                    color: Theme.opacity(Theme.white, 0.8)
                    font.pixelSize: Theme.title2
                    wrapMode: Text.Wrap
                    Layout.fillWidth: true
                }
            }
        }
    }
}
