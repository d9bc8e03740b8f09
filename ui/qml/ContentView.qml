import Brivanta
import QtQuick

// The root: the onboarding pages while showOnboarding is true (at every launch), then the main screen.
Item {
    id: root

    property bool showOnboarding: true

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
        sourceComponent: root.showOnboarding ? onboarding : main
    }

    Component {
        id: onboarding
        OnboardingView {
            objectName: "onboardingView"
            focus: true
            showOnboarding: root.showOnboarding
            onShowOnboardingChanged: root.showOnboarding = showOnboarding
        }
    }

    Component {
        id: main
        MainView {
            objectName: "mainView"
        }
    }

    ShareSheetView {}
    RatingPromptView {}
}
