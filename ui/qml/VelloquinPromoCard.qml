import Brivanta
import QtQuick

// Velloquin, the maker's speech-to-text app.
PromoCard {
    title: qsTr("Transcribe Easily with Velloquin ✍")
    description: qsTr("Convert speech into text effortlessly. Capture important conversations, meetings, and ideas with ease using Velloquin.")
    onBadgeClicked: SupportActions.openVelloquinStorePage()
}
