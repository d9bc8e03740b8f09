import Brivanta
import QtQuick
import QtQuick.Layouts
import Qt5Compat.GraphicalEffects

// Whether ad blocking is on: a shield and a green "Enabled" or red "Disabled" pill. Where the app can
// tell why blocking is off (a desktop), a disabled card says so, and offers the switch when it has one.
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

    implicitWidth: column.implicitWidth + 2 * Theme.padding
    implicitHeight: column.implicitHeight + 2 * Theme.padding

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

    ColumnLayout {
        id: column
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        anchors.margins: Theme.padding
        spacing: 15

        RowLayout {
            objectName: "statusTitleRow"
            spacing: 5
            Layout.alignment: Qt.AlignHCenter
            Layout.maximumWidth: column.width - 2 * Theme.padding
            Layout.leftMargin: Theme.padding
            Layout.rightMargin: Theme.padding

            // Switches at once: only the pill animates.
            SymbolImage {
                objectName: "statusSymbol"
                symbol: root.isBlockingEnabled ? "shield.checkerboard" : "shield.slash"
                color: root.stateColor
                Layout.preferredWidth: 40
                Layout.preferredHeight: 40
            }
            ColumnLayout {
                spacing: 5
                Layout.fillWidth: true
                Text {
                    text: qsTr("Ad Blocking Status")
                    color: Theme.white
                    font.pixelSize: Theme.title2
                    font.weight: Font.Bold
                    wrapMode: Text.Wrap
                    Layout.fillWidth: true
                }
            }
        }

        Item {
            id: pillRow
            objectName: "statusPillRow"
            Layout.fillWidth: true
            implicitHeight: 50

            Rectangle {
                id: pill
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
            text: root.reason
            color: Theme.opacity(Theme.white, 0.8)
            font.pixelSize: Theme.body
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        ActionButton {
            objectName: "switchOnButton"
            visible: root.showsSwitch
            enabled: !root.isSwitchingOn
            opacity: enabled ? 1 : 0.6
            title: root.isSwitchingOn ? qsTr("Switching On…") : qsTr("Switch On")
            icon: "lock.shield"
            action: () => root.switchOnRequested()
            Layout.alignment: Qt.AlignHCenter
            Layout.fillWidth: true
            Layout.maximumWidth: 260
        }
    }
}
