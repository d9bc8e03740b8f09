import Brivanta
import QtQuick
import QtQuick.Controls.Basic

// The two promotion cards in a swipeable pager with page dots: Orvindo first, then Velloquin. With the
// focus on a card's badge, the arrow keys move between the cards.
FocusScope {
    id: root

    property bool isTablet: false
    readonly property real cardMaximumWidth: isTablet ? 700 : 500

    implicitHeight: Math.max(orvindo.implicitHeight, velloquin.implicitHeight) + 2 * indicator.height + 16

    Keys.onLeftPressed: pager.decrementCurrentIndex()
    Keys.onRightPressed: pager.incrementCurrentIndex()

    SwipeView {
        id: pager
        objectName: "promotionSwipeView"
        anchors.fill: parent
        clip: true
        Accessible.role: Accessible.PageTabList
        Accessible.name: qsTr("Our other apps")

        // Only the card in view takes the focus.
        Item {
            objectName: "promotionPage0"
            enabled: SwipeView.isCurrentItem
            OrvindoPromoCard {
                id: orvindo
                objectName: "orvindoPromoCard"
                anchors.centerIn: parent
                width: Math.min(parent.width, root.cardMaximumWidth) - 40
            }
        }
        Item {
            objectName: "promotionPage1"
            enabled: SwipeView.isCurrentItem
            VelloquinPromoCard {
                id: velloquin
                objectName: "velloquinPromoCard"
                anchors.centerIn: parent
                width: Math.min(parent.width, root.cardMaximumWidth) - 40
            }
        }
    }

    PageDots {
        id: indicator
        objectName: "promotionPageIndicator"
        count: pager.count
        currentIndex: pager.currentIndex
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 6
        anchors.horizontalCenter: parent.horizontalCenter
    }
}
