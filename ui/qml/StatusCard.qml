import Brivanta
import QtQuick
import Qt5Compat.GraphicalEffects

// Whether ad blocking is on: a shield and a green "Enabled" or red "Disabled" pill. Where the app can
// tell why blocking is off (a desktop), a disabled card says so, and offers the switch when it has one.
// The card is drawn 20 in from the sides of the frame it is given, centred in its height.
Item {
    id: root

    property bool isBlockingEnabled: false
    property bool canSwitchOn: false
    property bool isSwitchingOn: false
    property string reason
    readonly property color stateColor: isBlockingEnabled ? Theme.green : Theme.red
    readonly property bool showsReason: !isBlockingEnabled && reason.length > 0
    readonly property bool showsSwitch: canSwitchOn && !isBlockingEnabled

    signal switchOnRequested

    implicitWidth: card.implicitWidth + 40
    implicitHeight: card.implicitHeight

    Item {
        id: card
        objectName: "statusCardBody"
        x: 20
        width: root.width - 40
        implicitWidth: titleRow.implicitWidth + 2 * Theme.padding
        implicitHeight: column.implicitHeight + 2 * Theme.padding
        height: implicitHeight
        anchors.verticalCenter: parent.verticalCenter

        BlurView {
            anchors.fill: parent
            radius: Theme.cardRadius
        }
        Rectangle {
            anchors.fill: parent
            radius: Theme.cardRadius
            color: "transparent"
            border.color: Theme.opacity(Theme.white, 0.1)
            border.width: 1
        }

        Column {
            id: column
            x: Theme.padding
            y: Theme.padding
            width: card.width - 2 * Theme.padding
            spacing: 15

            // The symbol and the title, centred as a pair. The symbol switches at once: only the pill
            // animates.
            Item {
                id: titleRow
                objectName: "statusTitleRow"
                readonly property real textSpace: column.width - 2 * Theme.padding - 45
                width: column.width
                implicitWidth: 45 + title.implicitWidth + 2 * Theme.padding
                implicitHeight: Math.max(40, title.implicitHeight)

                SymbolImage {
                    objectName: "statusSymbol"
                    symbol: root.isBlockingEnabled ? "shield.checkerboard" : "shield.slash"
                    color: root.stateColor
                    x: title.x - 45
                    width: 40
                    height: 40
                    anchors.verticalCenter: parent.verticalCenter
                }
                Text {
                    id: title
                    width: Math.min(implicitWidth, titleRow.textSpace)
                    x: 45 + (titleRow.width - 45 - width) / 2
                    anchors.verticalCenter: parent.verticalCenter
                    text: qsTr("Ad Blocking Status")
                    color: Theme.white
                    font.pixelSize: Theme.title2
                    font.weight: Font.Bold
                    wrapMode: Text.Wrap
                }
            }

            Item {
                id: pillRow
                objectName: "statusPillRow"
                width: column.width
                height: 50

                Rectangle {
                    objectName: "statusPill"
                    width: pillRow.width * Theme.statusWidthFactor(Device.isTablet)
                    height: 50
                    anchors.centerIn: parent
                    radius: Theme.cardRadius
                    color: Theme.opacity(root.stateColor, 0.2)
                    layer.enabled: GraphicsInfo.api !== GraphicsInfo.Software
                    layer.effect: DropShadow {
                        radius: 5
                        samples: 11
                        color: Theme.shadow
                    }

                    Behavior on color {
                        ColorAnimation { duration: 300; easing.type: Easing.BezierSpline; easing.bezierCurve: Theme.easeInOut }
                    }

                    Text {
                        objectName: "statusText"
                        anchors.centerIn: parent
                        text: root.isBlockingEnabled ? qsTr("Enabled") : qsTr("Disabled")
                        color: root.stateColor
                        font.pixelSize: Theme.headline
                        font.weight: Font.Bold

                        Behavior on color {
                            ColorAnimation { duration: 300; easing.type: Easing.BezierSpline; easing.bezierCurve: Theme.easeInOut }
                        }
                    }
                }
            }

            Text {
                objectName: "statusReason"
                visible: root.showsReason
                width: column.width
                text: root.reason
                color: Theme.opacity(Theme.white, 0.8)
                font.pixelSize: Theme.body
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
            }
            ActionButton {
                objectName: "switchOnButton"
                visible: root.showsSwitch
                enabled: !root.isSwitchingOn
                anchors.horizontalCenter: parent.horizontalCenter
                width: Math.min(column.width, 260)
                text: root.isSwitchingOn ? qsTr("Switching On…") : qsTr("Switch On")
                symbol: "lock.shield"
                onActivated: root.switchOnRequested()
            }
        }
    }
}
