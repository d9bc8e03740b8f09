import Brivanta
import QtQuick

// A text that may hold colour emoji: emoji runs are drawn in the emoji font.
Text {
    property string plainText

    text: EmojiText.richText(plainText)
    textFormat: Text.RichText
    color: Theme.white
}
