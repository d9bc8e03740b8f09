import Brivanta
import QtQuick
import QtQuick.Layouts

// The blocking test: two texts, the score and the sorted results once there are any, and the button.
Item {
    id: root

    property bool isTablet: false

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
        spacing: Theme.spacing

        Text {
            objectName: "testTitle"
            text: qsTr("Protection from Intrusive Ads")
            color: Theme.opacity(Theme.white, 0.8)
            font.pixelSize: Theme.headline
            font.weight: Theme.headlineWeight
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        Text {
            objectName: "testDescription"
            text: qsTr("Block annoying and intrusive ads for a cleaner, faster, and more enjoyable browsing experience.")
            color: Theme.opacity(Theme.white, 0.6)
            font.pixelSize: Theme.subheadline
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Layout.fillWidth: true
            Layout.topMargin: 2
        }

        Text {
            objectName: "scoreText"
            visible: MainViewModel.hasResults
            text: MainViewModel.scoreText
            color: MainViewModel.isScoreGood ? Theme.green : Theme.red
            font.pixelSize: Theme.title2
            font.weight: Font.Bold
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
            Layout.topMargin: 5
        }
        ColumnLayout {
            objectName: "resultRows"
            visible: MainViewModel.hasResults
            spacing: 5
            Layout.fillWidth: true
            Layout.topMargin: 10

            Repeater {
                model: MainViewModel.resultRows
                delegate: RowLayout {
                    required property var modelData
                    objectName: "resultRow"
                    spacing: Theme.spacing
                    Layout.fillWidth: true
                    Layout.topMargin: 2
                    Layout.bottomMargin: 2

                    Text {
                        objectName: "resultHost"
                        text: modelData.host
                        color: Theme.opacity(Theme.white, 0.8)
                        font.pixelSize: Theme.subheadline
                        elide: Text.ElideRight
                        Layout.fillWidth: true
                    }
                    EmojiLabel {
                        objectName: "resultLabel"
                        plainText: modelData.label
                        color: modelData.blocked ? Theme.green : Theme.red
                        font.pixelSize: Theme.subheadline
                    }
                }
            }
        }

        Item {
            objectName: "testButton"
            implicitWidth: testLabel.implicitWidth + 2 * Theme.padding
            implicitHeight: testLabel.implicitHeight + 2 * Theme.padding
            Layout.fillWidth: true
            Layout.maximumWidth: root.isTablet ? 300 : 200
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: 10

            Accessible.role: Accessible.Button
            Accessible.name: testText.text
            Accessible.onPressAction: MainViewModel.runTest()

            Rectangle {
                anchors.fill: parent
                radius: Theme.sectionRadius
                color: Theme.opacity(Theme.blue, 0.8)
            }
            RowLayout {
                id: testLabel
                anchors.centerIn: parent
                width: Math.min(implicitWidth, parent.width - 2 * Theme.padding)
                spacing: Theme.spacing

                SymbolImage {
                    symbol: "shield.lefthalf.filled"
                    Layout.preferredWidth: Theme.body + 3
                    Layout.preferredHeight: Theme.body + 3
                }
                Text {
                    id: testText
                    text: qsTr("Test Ad Blocking")
                    color: Theme.white
                    font.pixelSize: Theme.body
                    wrapMode: Text.Wrap
                    Layout.fillWidth: true
                }
            }
            MouseArea {
                anchors.fill: parent
                onClicked: MainViewModel.runTest()
            }
        }
    }
}
