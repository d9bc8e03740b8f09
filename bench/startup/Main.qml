import QtQuick

Window {
    width: 393
    height: 852
    visible: true
    color: "black"
    title: "Bare window"

    Text {
        anchors.centerIn: parent
        text: "Bare window"
        color: "white"
    }
}
