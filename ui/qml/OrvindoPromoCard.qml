import Brivanta
import QtQuick

// Orvindo, the maker's content blocker for Safari.
PromoCard {
    title: qsTr("Boost Your Privacy with Orvindo 🚀")
    description: qsTr("Block ads, cookies, popups, and tracking scripts directly in Safari. Enjoy a faster, cleaner, and private browsing experience with Orvindo.")
    onBadgeClicked: SupportActions.openOrvindoStorePage()
}
