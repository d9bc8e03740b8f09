import Brivanta
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import QtQuick.Templates as T

// The desktop rating prompt: offers the store's review page, or not now. Escape or a click outside
// closes it.
Popup {
    id: prompt
    objectName: "ratingPrompt"

    parent: T.Overlay.overlay
    modal: true
    dim: true
    focus: true
    closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutside
    padding: 20
    width: Math.min(320, parent.width - 2 * Theme.padding)
    x: (parent.width - width) / 2
    y: Math.max(0, (parent.height - implicitHeight) / 2)

    onClosed: RatingPrompt.dismiss()

    // Made when it is asked for (see ContentView).
    Component.onCompleted: if (RatingPrompt.visible) open()

    Connections {
        target: RatingPrompt
        function onVisibleChanged() {
            if (RatingPrompt.visible)
                prompt.open()
            else
                prompt.close()
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
            text: qsTr("Enjoying %1?").arg(Qt.application.name)
            color: Theme.white
            font.pixelSize: Theme.headline
            font.weight: Theme.headlineWeight
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        Text {
            text: qsTr("Rate it on the App Store. It only takes a moment.")
            color: Theme.opacity(Theme.white, 0.8)
            font.pixelSize: Theme.subheadline
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        Row {
            spacing: 6
            Layout.alignment: Qt.AlignHCenter
            Repeater {
                model: 5
                SymbolImage {
                    symbol: "star.fill"
                    color: Theme.yellow
                    width: 28
                    height: 28
                }
            }
        }
        BaseButton {
            objectName: "writeReviewButton"
            focus: true
            text: qsTr("Write a Review")
            padding: 12
            fill: Theme.blue
            font.weight: Font.Bold
            Layout.fillWidth: true
            onClicked: RatingPrompt.openReview()
        }
        BaseButton {
            objectName: "notNowButton"
            text: qsTr("Not Now")
            padding: 12
            fill: Theme.opacity(Theme.white, 0.12)
            Layout.fillWidth: true
            onClicked: prompt.close()
        }
    }
}
