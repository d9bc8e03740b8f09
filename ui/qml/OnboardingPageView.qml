import Brivanta
import QtQuick
import QtQuick.Controls.Basic

// One feature page: the symbol above centred text on a phone, beside leading text on a tablet. Only
// the idiom's layout is made. Centred in the page; where the window is too short for it, it scrolls
// instead of running under the page dots and the button.
Flickable {
    id: root

    required property onboardingPage page
    // The symbol gives way first in a short window, down to half its size.
    readonly property real symbolScale: Math.max(0.5, Math.min(1, height / 560))

    clip: true
    contentWidth: width
    contentHeight: Math.max(height, content.implicitHeight)
    boundsBehavior: Flickable.StopAtBounds
    ScrollIndicator.vertical: ScrollIndicator {}

    Loader {
        id: content
        objectName: "pageContent"
        y: Math.max(0, (root.height - implicitHeight) / 2)
        width: root.width
        sourceComponent: Device.isTablet ? tabletLayout : phoneLayout
    }

    // A word too long for the line shrinks the text rather than break inside the word.
    component PageText: Text {
        id: pageText

        property int basePixelSize
        // Read again whenever the measuring font changes.
        readonly property real widestWord: metrics.font.pixelSize > 0
            ? Math.max(...text.split(/\s+/).map(word => metrics.advanceWidth(word))) : 0

        color: Theme.white
        wrapMode: Text.WordWrap
        font.pixelSize: Math.min(basePixelSize, Math.floor(basePixelSize * width / Math.max(1, widestWord + 1)))

        FontMetrics {
            id: metrics
            font.family: pageText.font.family
            font.weight: pageText.font.weight
            font.pixelSize: pageText.basePixelSize
        }
    }

    component PhoneLayout: Column {
        id: phone

        property onboardingPage page
        property real symbolScale: 1

        objectName: "phonePageLayout"
        padding: Theme.padding
        spacing: 20

        SymbolImage {
            objectName: "pageSymbol"
            symbol: phone.page.imageName
            width: 100 * phone.symbolScale
            height: width
            anchors.horizontalCenter: parent.horizontalCenter
        }
        PageText {
            objectName: "pageTitle"
            x: Theme.padding + 20
            width: phone.width - 2 * x
            text: phone.page.title
            basePixelSize: Theme.largeTitle
            font.weight: Font.Bold
            horizontalAlignment: Text.AlignHCenter
        }
        PageText {
            objectName: "pageDescription"
            x: Theme.padding + 20
            width: phone.width - 2 * x
            text: phone.page.description
            color: Theme.opacity(Theme.white, 0.8)
            basePixelSize: Theme.headline
            font.weight: Theme.headlineWeight
            horizontalAlignment: Text.AlignHCenter
        }
    }

    component TabletLayout: Item {
        id: tablet

        property onboardingPage page
        property real symbolScale: 1

        objectName: "tabletPageLayout"
        implicitHeight: Math.max(symbol.height, words.implicitHeight) + 2 * Theme.padding

        SymbolImage {
            id: symbol
            objectName: "pageSymbol"
            symbol: tablet.page.imageName
            x: Theme.padding
            width: 150 * tablet.symbolScale
            height: width
            anchors.verticalCenter: parent.verticalCenter
        }
        Column {
            id: words
            x: symbol.x + symbol.width + 40 + 20
            width: parent.width - x - Theme.padding - 20
            anchors.verticalCenter: parent.verticalCenter
            spacing: 20

            PageText {
                objectName: "pageTitle"
                width: words.width
                text: tablet.page.title
                basePixelSize: Theme.largeTitle
                font.weight: Font.Bold
            }
            PageText {
                objectName: "pageDescription"
                width: words.width
                text: tablet.page.description
                color: Theme.opacity(Theme.white, 0.8)
                basePixelSize: Theme.title2
            }
        }
    }

    Component {
        id: phoneLayout
        PhoneLayout {}
    }
    Component {
        id: tabletLayout
        TabletLayout {}
    }
    // Components cannot reach this page's properties: they are bound to the item once it is made.
    Binding {
        target: content.item
        property: "page"
        value: root.page
        when: content.status === Loader.Ready
    }
    Binding {
        target: content.item
        property: "symbolScale"
        value: root.symbolScale
        when: content.status === Loader.Ready
    }
}
