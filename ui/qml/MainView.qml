import Brivanta
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The main screen, top to bottom: header, status, privacy, the add button, instructions, the blocking
// test, the promotion pager, support, and the share and rate row, divided by thin rules.
Item {
    id: root

    readonly property bool isTablet: Device.isTablet
    // The device's screen width: on the desktop the window's.
    readonly property real screenWidth: Device.windowWidth
    // What the cards' frosted glass blurs: nothing, as the backdrop is one solid colour and its blur is
    // that colour again; the glass is its tint alone over it, with no blur pass per frame.
    readonly property Item blurBackdrop: null

    Rectangle {
        id: backdrop
        anchors.fill: parent
        color: Theme.black
    }

    // The navigation container (one column, no title) around the stack layer.
    Item {
        id: navigationContainer
        objectName: "navigationContainer"
        anchors.fill: parent

        Item {
            id: stackLayer
            objectName: "stackLayer"
            anchors.fill: parent

            ApplicationScenePhase {
                id: environment
                onPhaseChanged: MainViewModel.scenePhase = phase
            }

            Component.onCompleted: {
                MainViewModel.scenePhase = environment.phase
                MainViewModel.onAppear()
            }

            Flickable {
                id: scrollView
                objectName: "mainScrollView"
                anchors.fill: parent
                contentWidth: width
                contentHeight: stack.implicitHeight + 2 * Theme.padding
                boundsBehavior: Flickable.StopAtBounds
                ScrollBar.vertical: ScrollBar {
                    policy: ScrollBar.AsNeeded
                }

                ColumnLayout {
                    id: stack
                    objectName: "mainStack"
                    x: Theme.padding
                    y: Theme.padding
                    width: scrollView.width - 2 * Theme.padding
                    spacing: 20

                    HeaderView {
                        objectName: "headerView"
                        Layout.alignment: Qt.AlignHCenter
                        Layout.fillWidth: true
                        Layout.maximumWidth: implicitWidth
                    }
                    Divider { objectName: "divider1" }

                    // A fixed frame, centred; it may be wider than the stack, as the frame is fixed.
                    Item {
                        objectName: "statusCardElement"
                        Layout.fillWidth: true
                        implicitHeight: statusCard.height

                        StatusCard {
                            id: statusCard
                            objectName: "statusCard"
                            isBlockingEnabled: MainViewModel.isBlockingEnabled
                            canSwitchOn: MainViewModel.canSwitchOn
                            isSwitchingOn: MainViewModel.isSwitchingOn
                            reason: MainViewModel.statusReason
                            width: root.screenWidth * Theme.statusWidthFactor(root.isTablet)
                            height: Math.max(180, implicitHeight)
                            onSwitchOnRequested: MainViewModel.switchOn()
                            anchors.horizontalCenter: parent.horizontalCenter
                        }
                    }
                    Divider { objectName: "divider2" }

                    PrivacyCard {
                        objectName: "privacyCard"
                        Layout.alignment: Qt.AlignHCenter
                        Layout.fillWidth: true
                        Layout.maximumWidth: implicitWidth
                        Layout.leftMargin: 20
                        Layout.rightMargin: 20
                    }
                    Divider { objectName: "divider3" }

                    ActionButton {
                        objectName: "addButton"
                        title: MainViewModel.addButtonTitle
                        icon: MainViewModel.addButtonSymbol
                        enabled: MainViewModel.addButtonEnabled
                        action: () => MainViewModel.addNetworkSettings()
                        Layout.alignment: Qt.AlignHCenter
                        Layout.fillWidth: true
                        Layout.maximumWidth: root.isTablet ? 400 : 300
                    }
                    Divider { objectName: "divider4" }

                    InstructionsView {
                        objectName: "instructionsView"
                        Layout.alignment: Qt.AlignHCenter
                        Layout.fillWidth: true
                        Layout.maximumWidth: implicitWidth
                        Layout.leftMargin: 20
                        Layout.rightMargin: 20
                    }
                    Divider { objectName: "divider5" }

                    // Framed at 500 (600) with the 20-point side padding inside that frame.
                    TestSection {
                        objectName: "testSection"
                        isTablet: root.isTablet
                        Layout.alignment: Qt.AlignHCenter
                        Layout.fillWidth: true
                        Layout.maximumWidth: (root.isTablet ? 600 : 500) - 40
                        Layout.leftMargin: 20
                        Layout.rightMargin: 20
                    }
                    Divider { objectName: "divider6" }

                    PromotionPager {
                        objectName: "promotionPager"
                        isTablet: root.isTablet
                        Layout.fillWidth: true
                        Layout.minimumHeight: 280
                    }
                    Divider { objectName: "divider7" }

                    SupportCard {
                        objectName: "supportCard"
                        isTablet: root.isTablet
                        Layout.alignment: Qt.AlignHCenter
                        Layout.fillWidth: true
                        Layout.maximumWidth: root.isTablet ? 700 : 500
                        Layout.leftMargin: 20
                        Layout.rightMargin: 20
                    }
                    Divider { objectName: "divider8" }

                    ShareAndRateRow {
                        objectName: "shareAndRateRow"
                        Layout.fillWidth: true
                    }
                }
            }
        }
    }
}
