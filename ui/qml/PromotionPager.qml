import Brivanta
import QtQuick
import QtQuick.Controls.Basic

// The two promotion cards in a swipeable pager with page dots: Orvindo first, then Velloquin.
Item {
    id: root

    property bool isTablet: false
    readonly property real cardMaximumWidth: isTablet ? 700 : 500

    implicitHeight: Math.max(orvindo.implicitHeight, velloquin.implicitHeight) + 2 * indicator.height + 16

    SwipeView {
        id: pager
        objectName: "promotionSwipeView"
        anchors.fill: parent
        clip: true

        Item {
            objectName: "promotionPage0"
            OrvindoPromoCard {
                id: orvindo
                objectName: "orvindoPromoCard"
                anchors.centerIn: parent
                width: Math.min(parent.width, root.cardMaximumWidth) - 40
            }
        }
        Item {
            objectName: "promotionPage1"
            VelloquinPromoCard {
                id: velloquin
                objectName: "velloquinPromoCard"
                anchors.centerIn: parent
                width: Math.min(parent.width, root.cardMaximumWidth) - 40
            }
        }
    }

    PageIndicator {
        id: indicator
        objectName: "promotionPageIndicator"
        count: pager.count
        currentIndex: pager.currentIndex
        anchors.bottom: parent.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        delegate: Rectangle {
            required property int index
            implicitWidth: 8
            implicitHeight: 8
            radius: 4
            color: Theme.white
            opacity: index === pager.currentIndex ? 1 : 0.3
        }
    }
}
