import Brivanta
import QtQuick

// Asks for an e-mail before a bad review; "Contact Support" opens a prefilled support request.
Item {
    id: root

    property bool isTablet: false

    implicitWidth: Math.max(header.implicitWidth, 250) + 2 * Theme.padding
    implicitHeight: column.implicitHeight + 2 * Theme.padding

    Rectangle {
        anchors.fill: parent
        radius: Theme.cardRadius
        color: Theme.opacity(Theme.black, 0.2)
    }

    Column {
        id: column
        x: Theme.padding
        y: Theme.padding
        width: root.width - 2 * Theme.padding
        spacing: 20

        CardHeaderRow {
            id: header
            objectName: "supportHeader"
            width: column.width
            symbol: "envelope.fill"
            title: qsTr("Need Assistance? Contact Support")
        }
        Text {
            x: 10
            width: column.width - 20
            text: qsTr("We're happy to help! If you have any questions or encounter an issue, please email us before leaving a negative App Store review—we can usually resolve most problems within minutes. Your detailed feedback helps us improve, while vague reviews make it harder to address concerns. We appreciate your support!")
            color: Theme.opacity(Theme.white, 0.8)
            font.pixelSize: Theme.subheadline
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
        EmojiLabel {
            objectName: "supportWarning"
            x: 10
            width: column.width - 20
            plainText: qsTr("⚠️ Emails containing spam, incorrect or empty information, marketing content, promotions, or deals will be ignored. Abusive senders will be reported and blocked.")
            color: Theme.opacity(Theme.white, 0.8)
            font.pixelSize: Theme.footnote
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
        BaseButton {
            objectName: "contactSupportButton"
            anchors.horizontalCenter: parent.horizontalCenter
            width: Math.min(column.width, root.isTablet ? 300 : 200)
            symbol: "envelope.open.fill"
            text: qsTr("Contact Support")
            fill: Theme.blue
            font.weight: Font.Bold
            onClicked: SupportActions.contactSupport()
        }
        EmojiLabel {
            objectName: "supportPrivacyNote"
            x: 10
            width: column.width - 20
            plainText: qsTr("🔒 Your email address is never shared with anyone, and we do not collect any personal data.")
            color: Theme.opacity(Theme.white, 0.6)
            font.pixelSize: Theme.footnote
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
    }
}
