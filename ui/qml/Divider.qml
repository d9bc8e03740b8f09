import Brivanta
import QtQuick
import QtQuick.Layouts

// A thin horizontal rule on white at 0.2.
Rectangle {
    Layout.fillWidth: true
    implicitHeight: 1
    color: Theme.opacity(Theme.white, 0.2)
}
