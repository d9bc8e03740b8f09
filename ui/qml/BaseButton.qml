import Brivanta
import QtQuick
import QtQuick.Templates as T

// The base of every button: Tab focus with a visible ring, Space, Return and Enter to press, the
// accessible button role and name, and hover and pressed shading. Its face is an optional symbol beside
// the text, centred on a rounded fill; the text wraps rather than lose its end.
T.AbstractButton {
    id: control

    property string symbol
    property real symbolSize: Theme.body + 3
    property color fill: Theme.opacity(Theme.black, 0.8)
    property color foreground: Theme.white
    property real radius: Theme.buttonRadius
    // The layer effect that shadows the fill, on renderers that draw effects. A user passes it in, so that
    // buttons without one (the onboarding's) do not load the graphical effects module at start-up.
    property Component shadowEffect: null
    readonly property real symbolSpace: symbol.length > 0 ? symbolSize + spacing : 0
    // Disabled buttons keep their shape but lose most of their colour.
    readonly property real shade: enabled ? 1 : 0.45

    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    padding: Theme.padding
    spacing: Theme.spacing
    font.pixelSize: Theme.body
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding

    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()
    Accessible.role: Accessible.Button
    Accessible.name: text

    // Ids inside the content item would keep it from being deferred, so the face is a component.
    component Face: Item {
        id: face

        required property string symbol
        required property real symbolSize
        required property real symbolSpace
        required property color color
        required property string text
        required property font font

        implicitWidth: symbolSpace + Math.ceil(natural.advanceWidth) + 1
        implicitHeight: Math.max(symbol.length > 0 ? symbolSize : 0, label.implicitHeight)

        TextMetrics {
            id: natural
            font: face.font
            text: face.text
        }
        SymbolImage {
            visible: face.symbol.length > 0
            symbol: face.symbol
            color: face.color
            width: face.symbolSize
            height: face.symbolSize
            x: label.x + (label.width - label.contentWidth) / 2 - face.symbolSpace
            anchors.verticalCenter: parent.verticalCenter
        }
        // At most as wide as the room beside the symbol, the lines centred in it.
        Text {
            id: label
            objectName: "buttonLabel"
            x: face.symbolSpace + (face.width - face.symbolSpace - width) / 2
            width: Math.min(face.width - face.symbolSpace, Math.ceil(natural.advanceWidth) + 1)
            text: face.text
            color: face.color
            font: face.font
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            anchors.verticalCenter: parent.verticalCenter
        }
    }

    contentItem: Face {
        symbol: control.symbol
        symbolSize: control.symbolSize
        symbolSpace: control.symbolSpace
        color: Theme.opacity(control.foreground, control.foreground.a * control.shade)
        text: control.text
        font: control.font
    }

    background: Rectangle {
        radius: control.radius
        color: Theme.opacity(control.fill, control.fill.a * control.shade)
        layer.enabled: control.shadowEffect !== null && GraphicsInfo.api !== GraphicsInfo.Software
        layer.effect: control.shadowEffect

        Rectangle {
            anchors.fill: parent
            radius: control.radius
            color: control.down ? Theme.opacity(Theme.black, 0.25)
                : control.hovered && control.enabled ? Theme.opacity(Theme.white, 0.12) : "transparent"
        }
    }

    Rectangle {
        objectName: "focusRing"
        anchors.fill: parent
        anchors.margins: -3
        radius: control.radius + 3
        color: "transparent"
        border.color: Theme.cyan
        border.width: 2
        visible: control.visualFocus
    }
}
