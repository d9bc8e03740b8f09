pragma Singleton
import QtQuick

// Numbers and colours that several views share. A number used once stays in its view.
QtObject {
    // Corner radii: information and support cards and the status pill; the test section, its button,
    // the promotion cards and the store badge; the action, onboarding, support, share and rate buttons.
    readonly property real cardRadius: 20
    readonly property real sectionRadius: 12
    readonly property real buttonRadius: 15

    // The toolkit's default padding and stack spacing.
    readonly property real padding: 16
    readonly property real spacing: 8

    // Width factor of the status card and its pill, indexed by the tablet test (0 phone, 1 tablet).
    readonly property var statusWidthFactors: [0.9, 0.4]
    function statusWidthFactor(isTablet) {
        return statusWidthFactors[isTablet ? 1 : 0]
    }

    // The platform's text styles, in points (pixels here).
    readonly property int largeTitle: 34
    readonly property int title: 28
    readonly property int title2: 22
    readonly property int title3: 20
    readonly property int headline: 17
    readonly property int body: 17
    readonly property int subheadline: 15
    readonly property int footnote: 13
    // The headline style is semibold.
    readonly property int headlineWeight: Font.DemiBold

    // The platform's named colours in the dark appearance the screens are drawn for.
    readonly property color white: "#ffffff"
    readonly property color black: "#000000"
    readonly property color red: "#ff453a"
    readonly property color green: "#30d158"
    readonly property color blue: "#0a84ff"
    readonly property color cyan: "#64d2ff"
    readonly property color yellow: "#ffd60a"

    function opacity(base, alpha) {
        return Qt.rgba(base.r, base.g, base.b, alpha)
    }

    // The platform's default shadow: black at 0.33.
    readonly property color shadow: Qt.rgba(0, 0, 0, 0.33)
    // The dark thin material's tint, which must read well alone where nothing can be blurred.
    readonly property color materialTint: Qt.rgba(0.14, 0.14, 0.15, 0.72)

    // SwiftUI's ease-out and ease-in-out curves.
    readonly property var easeOut: [0, 0, 0.58, 1, 1, 1]
    readonly property var easeInOut: [0.42, 0, 0.58, 1, 1, 1]
}
