pragma ComponentBehavior: Bound
import Brivanta
import QtQuick

// How to switch the configuration on, step by step. The steps are shown as they are, untranslated.
// Plain positioners with explicit text widths, so that a wrapped step's height is always current.
Item {
    id: root

    implicitWidth: Math.max(heading.implicitWidth, 26 + steps.widestText) + 2 * Theme.padding
    implicitHeight: column.implicitHeight + 2 * Theme.padding

    BlurView {
        anchors.fill: parent
        radius: Theme.cardRadius
    }

    Column {
        id: column
        x: Theme.padding
        y: Theme.padding
        width: root.width - 2 * Theme.padding
        spacing: 10

        Text {
            id: heading
            width: column.width
            text: qsTr("How to Enable Ad Blocking:")
            color: Theme.white
            font.pixelSize: Theme.headline
            font.weight: Theme.headlineWeight
            wrapMode: Text.Wrap
        }
        Repeater {
            id: steps

            property real widestText: 0

            model: InstructionSteps.count
            delegate: Item {
                id: step
                objectName: "instructionRow" + index
                required property int index
                width: column.width
                implicitHeight: Math.max(18, stepText.implicitHeight)

                Component.onCompleted: steps.widestText = Math.max(steps.widestText, stepText.implicitWidth)

                SymbolImage {
                    objectName: "instructionSymbol"
                    symbol: InstructionSteps.symbol(step.index)
                    color: Theme.cyan
                    y: 1
                    width: 18
                    height: 18
                }
                Text {
                    id: stepText
                    objectName: "instructionText"
                    x: 26
                    width: step.width - x
                    text: InstructionSteps.text(step.index)
                    color: Theme.white
                    font.pixelSize: Theme.body
                    wrapMode: Text.Wrap
                }
            }
        }
    }
}
