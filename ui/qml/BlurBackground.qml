import Brivanta
import QtQuick

// The full-screen backdrop: black at the top to red at 0.7 at the bottom.
Rectangle {
    gradient: Gradient {
        GradientStop { position: 0; color: Theme.black }
        GradientStop { position: 1; color: Theme.opacity(Theme.red, 0.7) }
    }
}
