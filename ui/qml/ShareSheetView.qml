import Brivanta
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import QtQuick.Templates as T

// The desktop share sheet: the composed text and the link, to copy or send by e-mail. As a popover
// without an arrow it floats centred on its anchor point; otherwise it rises from the bottom edge like
// a phone's sheet. Escape or a click outside closes it.
Popup {
    id: sheet
    objectName: "shareSheet"

    readonly property bool centred: ShareSheet.centred
    // Qt 6.4's qmllint does not know QRectF, the rect the share sheet gives.
    readonly property rect anchorRect: ShareSheet.sourceRect // qmllint disable type

    parent: T.Overlay.overlay
    modal: true
    dim: true
    focus: true
    closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutside
    padding: 20
    width: centred ? Math.min(440, parent.width - 2 * Theme.padding) : parent.width
    x: centred ? anchorRect.x - width / 2 : 0
    // From the implicit height: the popup would otherwise shrink itself to fit where a smaller, earlier
    // height put it.
    y: Math.max(0, centred ? anchorRect.y - implicitHeight / 2 : parent.height - implicitHeight)

    onClosed: ShareSheet.dismiss()

    // Made when it is asked for (see ContentView).
    Component.onCompleted: if (ShareSheet.visible) open()

    Connections {
        target: ShareSheet
        function onVisibleChanged() {
            if (ShareSheet.visible)
                sheet.open()
            else
                sheet.close()
        }
    }

    T.Overlay.modal: Rectangle {
        color: Theme.opacity(Theme.black, 0.4)
    }

    background: Rectangle {
        color: "#1c1c1e"
        radius: Theme.cardRadius
        border.color: Theme.opacity(Theme.white, 0.1)
        border.width: 1
    }

    contentItem: ColumnLayout {
        spacing: 12

        Text {
            text: qsTr("Share")
            color: Theme.white
            font.pixelSize: Theme.headline
            font.weight: Theme.headlineWeight
            Layout.alignment: Qt.AlignHCenter
        }
        EmojiLabel {
            objectName: "shareText"
            plainText: ShareSheet.text
            font.pixelSize: Theme.subheadline
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        Text {
            objectName: "shareLink"
            text: ShareSheet.urlText
            color: Theme.blue
            font.pixelSize: Theme.subheadline
            wrapMode: Text.WrapAnywhere
            Layout.fillWidth: true
        }
        // Side by side where there is room, one under the other on a phone.
        GridLayout {
            columns: sheet.width < 420 ? 1 : 3
            rowSpacing: Theme.spacing
            columnSpacing: Theme.spacing
            Layout.fillWidth: true
            Layout.topMargin: 4

            component SheetButton: BaseButton {
                padding: 12
                spacing: 6
                symbolSize: 18
                font.pixelSize: Theme.subheadline
                fill: Theme.opacity(Theme.white, 0.12)
                radius: Theme.sectionRadius
                Layout.fillWidth: true
            }

            SheetButton {
                objectName: "copyButton"
                focus: true
                symbol: "doc.on.doc"
                text: qsTr("Copy")
                onClicked: ShareSheet.copyToClipboard()
            }
            SheetButton {
                objectName: "emailButton"
                symbol: "envelope.fill"
                text: qsTr("Send by E-mail")
                onClicked: ShareSheet.sendByEmail()
            }
            SheetButton {
                objectName: "closeShareButton"
                symbol: "xmark"
                text: qsTr("Close")
                onClicked: sheet.close()
            }
        }
    }
}
