import Brivanta
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The main screen, top to bottom: header, status, privacy, the add button, instructions, the blocking
// test, the promotion pager, support, and the share and rate row, divided by thin rules. The arrow and
// page keys, Home and End scroll it; it scrolls the control that takes the focus into view.
FocusScope {
    id: root

    readonly property bool isTablet: Device.isTablet
    // The device's screen width: on the desktop the window's.
    readonly property real screenWidth: Device.windowWidth
    // What the cards' frosted glass blurs: nothing, as the backdrop is one solid colour and its blur is
    // that colour again; the glass is its tint alone over it, with no blur pass per frame.
    readonly property Item blurBackdrop: null

    readonly property Item focusedItem: Window.activeFocusItem

    function scrollTo(contentY) {
        scrollView.contentY = Math.max(0, Math.min(contentY, scrollView.contentHeight - scrollView.height))
    }

    // Brings an item inside the scroll view fully into view, with a margin.
    function reveal(item) {
        let ancestor = item
        while (ancestor && ancestor !== scrollView.contentItem)
            ancestor = ancestor.parent
        if (!ancestor)
            return
        const top = item.mapToItem(scrollView.contentItem, 0, 0).y - Theme.padding
        const bottom = top + item.height + 2 * Theme.padding
        if (top < scrollView.contentY)
            scrollTo(top)
        else if (bottom > scrollView.contentY + scrollView.height)
            scrollTo(bottom - scrollView.height)
    }

    focus: true
    onFocusedItemChanged: reveal(focusedItem)
    Keys.onUpPressed: scrollTo(scrollView.contentY - 40)
    Keys.onDownPressed: scrollTo(scrollView.contentY + 40)
    Keys.onPressed: event => {
        const page = scrollView.height - 40
        if (event.key === Qt.Key_PageUp)
            scrollTo(scrollView.contentY - page)
        else if (event.key === Qt.Key_PageDown)
            scrollTo(scrollView.contentY + page)
        else if (event.key === Qt.Key_Home)
            scrollTo(0)
        else if (event.key === Qt.Key_End)
            scrollTo(scrollView.contentHeight)
        else
            return
        event.accepted = true
    }

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
                        text: MainViewModel.addButtonTitle
                        symbol: MainViewModel.addButtonSymbol
                        enabled: MainViewModel.addButtonEnabled
                        onActivated: MainViewModel.addNetworkSettings()
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
