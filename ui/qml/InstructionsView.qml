import Brivanta
import QtQuick
import QtQuick.Layouts

// How to switch the configuration on, step by step. The steps are shown as they are, untranslated.
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

        Text {
            text: qsTr("How to Enable Ad Blocking:")
            color: Theme.white
            font.pixelSize: Theme.headline
            font.weight: Theme.headlineWeight
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        Repeater {
            model: InstructionSteps.count
            delegate: RowLayout {
                objectName: "instructionRow" + index
                required property int index
                spacing: 8
                Layout.fillWidth: true

                SymbolImage {
                    objectName: "instructionSymbol"
                    symbol: InstructionSteps.symbol(index)
                    color: Theme.cyan
                    Layout.preferredWidth: 18
                    Layout.preferredHeight: 18
                    Layout.alignment: Qt.AlignTop
                    Layout.topMargin: 1
                }
                Text {
                    objectName: "instructionText"
                    text: InstructionSteps.text(index)
                    color: Theme.white
                    font.pixelSize: Theme.body
                    wrapMode: Text.Wrap
                    Layout.fillWidth: true
                    Layout.alignment: Qt.AlignTop
                }
            }
        }
    }
}
