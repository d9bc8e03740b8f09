pragma ComponentBehavior: Bound
import Brivanta
import QtQuick

// The page dots under a pager: one white dot per page, the current one opaque.
Row {
    id: dots

    required property int count
    required property int currentIndex

    spacing: 8

    Repeater {
        model: dots.count
        delegate: Rectangle {
            required property int index
            width: 8
            height: 8
            radius: 4
            color: Theme.white
            opacity: index === dots.currentIndex ? 1 : 0.3
        }
    }
}
