import QtQuick

Window {
    width: 390
    height: 844
    visible: true
    color: "black"
    title: "Bare window"

    Text {
        anchors.centerIn: parent
        text: "Bare window"
        color: "white"
    }
}
