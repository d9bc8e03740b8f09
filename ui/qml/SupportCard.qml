import Brivanta
import QtQuick
import QtQuick.Layouts

// Asks for an e-mail before a bad review; "Contact Support" opens a prefilled support request.
Item {
    id: root

    property bool isTablet: false

    implicitWidth: column.implicitWidth + 2 * Theme.padding
    implicitHeight: column.implicitHeight + 2 * Theme.padding

    Rectangle {
        anchors.fill: parent
        radius: Theme.cardRadius
        color: Theme.opacity(Theme.black, 0.2)
    }

    ColumnLayout {
        id: column
        anchors.fill: parent
        anchors.margins: Theme.padding
        spacing: 20

        CardHeaderRow {
            symbol: "envelope.fill"
            title: qsTr("Need Assistance? Contact Support")
            Layout.alignment: Qt.AlignHCenter
            Layout.maximumWidth: column.width
        }
        Text {
            text: qsTr("We're happy to help! If you have any questions or encounter an issue, please email us before leaving a negative App Store review—we can usually resolve most problems within minutes. Your detailed feedback helps us improve, while vague reviews make it harder to address concerns. We appreciate your support!")
            color: Theme.opacity(Theme.white, 0.8)
            font.pixelSize: Theme.subheadline
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Layout.fillWidth: true
            Layout.leftMargin: 10
            Layout.rightMargin: 10
        }
        EmojiLabel {
            objectName: "supportWarning"
            plainText: qsTr("⚠️ Emails containing spam, incorrect or empty information, marketing content, promotions, or deals will be ignored. Abusive senders will be reported and blocked.")
            color: Theme.opacity(Theme.white, 0.8)
            font.pixelSize: Theme.footnote
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Layout.fillWidth: true
            Layout.leftMargin: 10
            Layout.rightMargin: 10
        }
        Item {
            objectName: "contactSupportButton"
            implicitWidth: contactLabel.implicitWidth + 2 * Theme.padding
            implicitHeight: contactLabel.implicitHeight + 2 * Theme.padding
            Layout.fillWidth: true
            Layout.maximumWidth: root.isTablet ? 300 : 200
            Layout.alignment: Qt.AlignHCenter

            Accessible.role: Accessible.Button
            Accessible.name: contactText.text
            Accessible.onPressAction: SupportActions.contactSupport()

            Rectangle {
                anchors.fill: parent
                radius: Theme.buttonRadius
                color: Theme.blue
            }
            RowLayout {
                id: contactLabel
                anchors.centerIn: parent
                width: Math.min(implicitWidth, parent.width - 2 * Theme.padding)
                spacing: Theme.spacing

                SymbolImage {
                    symbol: "envelope.open.fill"
                    Layout.preferredWidth: Theme.body + 3
                    Layout.preferredHeight: Theme.body + 3
                }
                Text {
                    id: contactText
                    text: qsTr("Contact Support")
                    color: Theme.white
                    font.pixelSize: Theme.body
                    font.weight: Font.Bold
                    wrapMode: Text.Wrap
                    Layout.fillWidth: true
                }
            }
            MouseArea {
                anchors.fill: parent
                onClicked: SupportActions.contactSupport()
            }
        }
        EmojiLabel {
            objectName: "supportPrivacyNote"
            plainText: qsTr("🔒 Your email address is never shared with anyone, and we do not collect any personal data.")
            color: Theme.opacity(Theme.white, 0.6)
            font.pixelSize: Theme.footnote
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Layout.fillWidth: true
            Layout.leftMargin: 10
            Layout.rightMargin: 10
        }
    }
}
