pragma ComponentBehavior: Bound
import Brivanta
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The blocking test: two texts, the score and the sorted results once there are any, and the button,
// with a spinner beside it while a run is out.
Item {
    id: root

    property bool isTablet: false

    implicitWidth: Math.max(title.implicitWidth, description.implicitWidth, 200) + 2 * Theme.padding
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
        spacing: Theme.spacing

        Text {
            id: title
            objectName: "testTitle"
            width: column.width
            text: qsTr("Protection from Intrusive Ads")
            color: Theme.opacity(Theme.white, 0.8)
            font.pixelSize: Theme.headline
            font.weight: Theme.headlineWeight
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
        Text {
            id: description
            objectName: "testDescription"
            width: column.width
            topPadding: 2
            text: qsTr("Block annoying and intrusive ads for a cleaner, faster, and more enjoyable browsing experience.")
            color: Theme.opacity(Theme.white, 0.6)
            font.pixelSize: Theme.subheadline
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
        Text {
            objectName: "scoreText"
            visible: MainViewModel.hasResults
            width: column.width
            topPadding: 5
            text: MainViewModel.scoreText
            color: MainViewModel.isScoreGood ? Theme.green : Theme.red
            font.pixelSize: Theme.title2
            font.weight: Font.Bold
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
        Column {
            objectName: "resultRows"
            visible: MainViewModel.hasResults
            width: column.width
            topPadding: 10
            spacing: 5

            Repeater {
                model: MainViewModel.resultRows
                delegate: RowLayout {
                    id: row
                    required property var modelData
                    objectName: "resultRow"
                    width: column.width
                    spacing: Theme.spacing

                    Text {
                        objectName: "resultHost"
                        text: row.modelData.host
                        color: Theme.opacity(Theme.white, 0.8)
                        font.pixelSize: Theme.subheadline
                        elide: Text.ElideRight
                        topPadding: 2
                        bottomPadding: 2
                        Layout.fillWidth: true
                    }
                    EmojiLabel {
                        objectName: "resultLabel"
                        plainText: row.modelData.label
                        color: row.modelData.blocked ? Theme.green : Theme.red
                        font.pixelSize: Theme.subheadline
                    }
                }
            }
        }
        Item {
            objectName: "testButtonRow"
            width: column.width
            height: testButton.height + 10

            BaseButton {
                id: testButton
                objectName: "testButton"
                y: 10
                anchors.horizontalCenter: parent.horizontalCenter
                width: Math.min(parent.width, root.isTablet ? 300 : 200)
                symbol: "shield.lefthalf.filled"
                text: qsTr("Test Ad Blocking")
                fill: Theme.opacity(Theme.blue, 0.8)
                radius: Theme.sectionRadius
                onClicked: MainViewModel.runTest()
            }
            // Presses while a run is out still start another run, as they always have.
            BusyIndicator {
                objectName: "testBusyIndicator"
                running: MainViewModel.isTesting
                visible: running
                x: testButton.x + testButton.width + Theme.spacing
                anchors.verticalCenter: testButton.verticalCenter
                width: 28
                height: 28
                Accessible.name: qsTr("Testing…")
            }
        }
    }
}
