import Brivanta
import QtQuick
import QtQuick.Layouts

// A wide button that shrinks and fades briefly when tapped. The action runs on the tap itself; the
// release follows 0.1 s later, without an animation of its own.
Item {
    id: root

    property string title
    property string icon
    property var action: null
    property bool isPressed: false

    signal released

    function tap() {
        isPressed = true
        pressAnimation.restart()
        releaseTask.createObject(root)
        if (action)
            action()
    }

    function release() {
        pressAnimation.stop()
        isPressed = false
        scale = 1
        opacity = 1
        released()
    }

    implicitWidth: label.implicitWidth + 2 * Theme.padding
    implicitHeight: label.implicitHeight + 2 * Theme.padding

    Accessible.role: Accessible.Button
    Accessible.name: title
    Accessible.onPressAction: tap()

    // Each tap schedules its own release, so a second tap within 0.1 s may be ended by the first release.
    Component {
        id: releaseTask
        Timer {
            interval: 100
            running: true
            onTriggered: {
                root.release()
                destroy()
            }
        }
    }

    ParallelAnimation {
        id: pressAnimation
        NumberAnimation {
            target: root; property: "scale"; to: 0.95; duration: 100
            easing.type: Easing.BezierSpline; easing.bezierCurve: Theme.easeOut
        }
        NumberAnimation {
            target: root; property: "opacity"; to: 0.7; duration: 100
            easing.type: Easing.BezierSpline; easing.bezierCurve: Theme.easeOut
        }
    }

    Rectangle {
        anchors.fill: parent
        radius: Theme.buttonRadius
        color: Theme.opacity(Theme.black, 0.8)
    }

    RowLayout {
        id: label
        anchors.centerIn: parent
        width: Math.min(implicitWidth, root.width - 2 * Theme.padding)
        spacing: Theme.spacing

        SymbolImage {
            objectName: "actionButtonSymbol"
            symbol: root.icon
            Layout.preferredWidth: Theme.body + 3
            Layout.preferredHeight: Theme.body + 3
        }
        Text {
            objectName: "actionButtonTitle"
            text: root.title
            color: Theme.white
            font.pixelSize: Theme.body
            font.weight: Font.Bold
            // Long translations wrap rather than lose their end.
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
    }

    MouseArea {
        anchors.fill: parent
        onClicked: root.tap()
    }
}
