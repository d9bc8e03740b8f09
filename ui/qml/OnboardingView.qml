import Brivanta
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// Nine swipeable feature pages and one button: "Next" until the last page, where "Get Started" ends
// the onboarding by clearing showOnboarding. Swiping, or the arrow keys, move between pages but never
// end it.
FocusScope {
    id: root

    property bool showOnboarding: true
    property int currentPage: 0
    property var pages: OnboardingPages.pages

    Keys.onLeftPressed: pager.decrementCurrentIndex()
    Keys.onRightPressed: pager.incrementCurrentIndex()

    BlurBackground {
        anchors.fill: parent
    }

    ColumnLayout {
        id: column
        anchors.fill: parent
        anchors.leftMargin: Device.isTablet ? 80 : 20
        anchors.rightMargin: Device.isTablet ? 80 : 20
        spacing: Theme.spacing

        SwipeView {
            id: pager
            objectName: "onboardingPager"
            clip: true
            currentIndex: root.currentPage
            onCurrentIndexChanged: root.currentPage = currentIndex
            Layout.fillWidth: true
            Layout.fillHeight: true
            Accessible.role: Accessible.PageTabList
            Accessible.name: qsTr("Feature pages")

            // Only the page in view and its neighbours exist, so that a swipe always finds the next one.
            Repeater {
                model: root.pages.length
                delegate: Loader {
                    id: pageSlot
                    required property int index

                    active: SwipeView.isCurrentItem || SwipeView.isNextItem || SwipeView.isPreviousItem
                    sourceComponent: Item {
                        OnboardingPageView {
                            objectName: "onboardingPage"
                            // Through the file's scope: Qt 6.4 cannot load bound components in a Loader.
                            page: root.pages[pageSlot.index] // qmllint disable unqualified
                            anchors.horizontalCenter: parent.horizontalCenter
                            y: Theme.padding
                            width: Math.min(parent.width - 2 * Theme.padding, 700)
                            // Clear of the page dots.
                            height: parent.height - 2 * Theme.padding - 16
                        }
                    }
                }
            }
        }

        BaseButton {
            id: button
            objectName: "onboardingButton"
            focus: true
            text: OnboardingPages.buttonTitle(root.currentPage, root.pages.length)
            font.weight: Font.Bold
            // The label's frame is at most 300 (400) wide; the padding lies outside it.
            Layout.fillWidth: true
            Layout.maximumWidth: (Device.isTablet ? 400 : 300) + leftPadding + rightPadding
            Layout.alignment: Qt.AlignHCenter
            Layout.bottomMargin: 20

            onClicked: {
                const next = OnboardingPages.pageAfterPress(root.currentPage, root.pages.length)
                if (next < 0)
                    root.showOnboarding = false
                else
                    root.currentPage = next
            }

        }
    }

    // The page dots, always shown, in the platform's default white.
    PageDots {
        objectName: "onboardingPageIndicator"
        count: pager.count
        currentIndex: pager.currentIndex
        x: column.x + pager.x + (pager.width - width) / 2
        y: column.y + pager.y + pager.height - height - 10
    }
}
