import Brivanta
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// Nine swipeable feature pages and one button: "Next" until the last page, where "Get Started" ends
// the onboarding by clearing showOnboarding. Swiping moves between pages but never ends it.
Item {
    id: root

    property bool showOnboarding: true
    property int currentPage: 0
    property var pages: OnboardingPages.pages

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

            // Only the page in view and its neighbours exist, so that a swipe always finds the next one.
            Repeater {
                model: root.pages.length
                delegate: Loader {
                    id: pageSlot
                    required property int index

                    active: SwipeView.isCurrentItem || SwipeView.isNextItem || SwipeView.isPreviousItem
                    sourceComponent: Item {
                        OnboardingPageView {
                            page: root.pages[pageSlot.index]
                            anchors.centerIn: parent
                            width: Math.min(parent.width - 2 * Theme.padding, 700)
                            height: parent.height - 2 * Theme.padding
                        }
                    }
                }
            }
        }

        Button {
            id: button
            objectName: "onboardingButton"
            text: OnboardingPages.buttonTitle(root.currentPage, root.pages.length)
            padding: Theme.padding
            Layout.fillWidth: true
            Layout.maximumWidth: Device.isTablet ? 400 : 300
            Layout.alignment: Qt.AlignHCenter
            Layout.bottomMargin: 20

            onClicked: {
                const next = OnboardingPages.pageAfterPress(root.currentPage, root.pages.length)
                if (next < 0)
                    root.showOnboarding = false
                else
                    root.currentPage = next
            }

            contentItem: Text {
                text: button.text
                color: Theme.white
                font.pixelSize: Theme.body
                font.weight: Font.Bold
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
                elide: Text.ElideRight
            }
            background: Rectangle {
                radius: Theme.buttonRadius
                color: Theme.opacity(Theme.black, 0.8)
            }
        }
    }

    // The page dots, always shown, in the platform's default white.
    PageIndicator {
        objectName: "onboardingPageIndicator"
        count: pager.count
        currentIndex: pager.currentIndex
        x: column.x + pager.x + (pager.width - width) / 2
        y: column.y + pager.y + pager.height - height - 4
        delegate: Rectangle {
            required property int index
            implicitWidth: 8
            implicitHeight: 8
            radius: 4
            color: Theme.white
            opacity: index === pager.currentIndex ? 1 : 0.3
        }
    }
}
