import Brivanta
import QtQuick

// The root: the onboarding pages while showOnboarding is true (at every launch), then the main screen.
Item {
    id: root

    property bool showOnboarding: true

    // The main screen loads by its URL when it is first shown, so that starting up loads the onboarding's
    // types and imports only, not the main screen's.
    function showScreen() {
        if (showOnboarding)
            content.sourceComponent = onboarding
        else
            content.setSource("MainView.qml", { objectName: "mainView" })
    }

    onShowOnboardingChanged: showScreen()

    Shortcut {
        sequence: "Ctrl+Q"
        context: Qt.ApplicationShortcut
        onActivated: Qt.quit()
    }

    Loader {
        id: content
        objectName: "content"
        anchors.fill: parent
        focus: true
        Component.onCompleted: root.showScreen()
    }

    Component {
        id: onboarding
        OnboardingView {
            objectName: "onboardingView"
            focus: true
            // Qt 6.4 refuses bound components in a Loader ("Cannot instantiate bound component"), so these
            // reach the root through the file's scope.
            showOnboarding: root.showOnboarding // qmllint disable unqualified
            onShowOnboardingChanged: root.showOnboarding = showOnboarding // qmllint disable unqualified
        }
    }

    // The share sheet and the rating prompt exist only while they are asked for. A closing popup hands
    // the focus to the window's root item, where no key does anything: it goes back to the screen.
    Loader {
        active: ShareSheet.visible
        source: "ShareSheetView.qml"
        onActiveChanged: if (!active) content.forceActiveFocus()
    }
    Loader {
        active: RatingPrompt.visible
        source: "RatingPromptView.qml"
        onActiveChanged: if (!active) content.forceActiveFocus()
    }
}
