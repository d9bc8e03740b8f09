import Brivanta
import QtQuick

// The root: the onboarding pages while showOnboarding is true (at every launch), then the main screen.
Item {
    id: root

    property bool showOnboarding: true

    Loader {
        id: content
        objectName: "content"
        anchors.fill: parent
        sourceComponent: root.showOnboarding ? onboarding : main
    }

    Component {
        id: onboarding
        OnboardingView {
            objectName: "onboardingView"
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
