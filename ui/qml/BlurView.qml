pragma ComponentBehavior: Bound

import Brivanta
import QtQuick
import Qt5Compat.GraphicalEffects

// Frosted glass: a blur of what lies behind plus the dark material's tint. What lies behind is the
// nearest ancestor's `blurBackdrop`. The software renderer cannot blur; the tint alone is drawn there.
Item {
    id: root

    property real radius: 0
    property Item backdrop: null
    readonly property bool blurs: backdrop !== null && GraphicsInfo.api !== GraphicsInfo.Software

    function updateSourceRect() {
        if (!blurs)
            return
        const topLeft = root.mapToItem(backdrop, 0, 0)
        behind.sourceRect = Qt.rect(topLeft.x, topLeft.y, root.width, root.height)
    }

    Component.onCompleted: {
        for (let item = parent; item; item = item.parent) {
            if (item.blurBackdrop !== undefined) {
                backdrop = item.blurBackdrop
                break
            }
        }
    }

    // The card moves with the scroll view without any of its own properties changing: follow it per frame.
    Connections {
        target: root.Window.window
        enabled: root.blurs
        function onAfterAnimating() { root.updateSourceRect() }
    }

    ShaderEffectSource {
        id: behind
        sourceItem: root.blurs ? root.backdrop : null
        visible: false
    }

    Item {
        anchors.fill: parent
        visible: root.blurs
        layer.enabled: root.blurs && root.radius > 0
        layer.effect: OpacityMask {
            maskSource: Rectangle {
                width: root.width
                height: root.height
                radius: root.radius
            }
        }

        FastBlur {
            anchors.fill: parent
            source: behind
            radius: 40
        }
    }

    Rectangle {
        anchors.fill: parent
        radius: root.radius
        color: Theme.materialTint
    }
}
