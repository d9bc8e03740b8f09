pragma ComponentBehavior: Bound
import Brivanta
import QtQuick

// A wide button that shrinks and fades briefly when pressed. `activated` runs on the press itself; the
// release follows 0.1 s later, without an animation of its own.
BaseButton {
    id: root

    property bool isPressed: false

    signal activated

    function tap() {
        isPressed = true
        pressAnimation.restart()
        releaseTask.createObject(root)
        activated()
    }

    function release() {
        pressAnimation.stop()
        isPressed = false
        scale = 1
        opacity = 1
    }

    font.weight: Font.Bold
    onClicked: tap()

    // Each press schedules its own release, so a second press within 0.1 s may be ended by the first release.
    Component {
        id: releaseTask
        Timer {
            id: timer
            interval: 100
            running: true
            onTriggered: {
                root.release()
                timer.destroy()
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
}
