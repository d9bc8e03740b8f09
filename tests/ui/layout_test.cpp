#include "ui/brivanta_app.h"
#include "ui_harness.h"

#include <QAccessible>
#include <QQuickItem>
#include <QSet>
#include <QTest>
#include <QTranslator>
#include <cmath>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

using testing::UiHarness;

// What the user sees of one text or control, in scene coordinates.
struct Box
{
    QQuickItem *item;
    QRectF rect;
};

std::string describe(const QQuickItem *item)
{
    const QString text = item->property("text").toString();
    return QStringLiteral("%1 \"%2\"").arg(item->objectName(), text.left(40)).toStdString();
}

// A text's painted lines, which may run past its item when it is too narrow or too short for them.
QRectF paintedRect(const QQuickItem *text)
{
    const qreal left = text->property("leftPadding").toReal();
    const qreal top = text->property("topPadding").toReal();
    const qreal room = text->width() - left - text->property("rightPadding").toReal();
    const qreal width = text->property("contentWidth").toReal();
    const int alignment = text->property("horizontalAlignment").toInt();
    qreal x = left;
    if (alignment & Qt::AlignHCenter)
        x += (room - width) / 2;
    else if (alignment & Qt::AlignRight)
        x += room - width;
    return text->mapRectToScene(QRectF(x, top, width, text->property("contentHeight").toReal()));
}

bool isButton(const QQuickItem *item)
{
    return item->inherits("QQuickAbstractButton");
}

bool contains(const QRectF &outer, const QRectF &inner)
{
    return outer.adjusted(-0.5, -0.5, 0.5, 0.5).contains(inner);
}

bool overlap(const QRectF &a, const QRectF &b)
{
    const QRectF shared = a.intersected(b);
    return shared.width() > 0.5 && shared.height() > 0.5;
}

QRectF sceneRect(const QQuickItem *item)
{
    return item->mapRectToScene(item->boundingRect());
}

// The part of an item's box that is not clipped away; empty when it is hidden or scrolled out of view.
// A page that scrolls down clips only what lies above or below it: a line too wide for it still counts.
QRectF shownPart(const QQuickItem *item, QRectF box)
{
    for (const QQuickItem *ancestor = item; ancestor; ancestor = ancestor->parentItem()) {
        if (!ancestor->isVisible() || ancestor->opacity() == 0)
            return {};
        if (ancestor == item || !ancestor->clip())
            continue;
        QRectF clip = sceneRect(ancestor);
        if (ancestor->inherits("QQuickFlickable"))
            clip = QRectF(box.x(), clip.y(), box.width(), clip.height());
        box = box.intersected(clip);
    }
    return box.width() > 0.5 && box.height() > 0.5 ? box : QRectF();
}

// Every shown text and button under `item`; a button's own label counts as part of the button.
void collect(QQuickItem *item, QList<Box> &boxes)
{
    if (!item->isVisible())
        return;
    QRectF box;
    const bool isControl = isButton(item) || item->objectName().endsWith(QLatin1String("PageIndicator"));
    if (isControl)
        box = sceneRect(item);
    else if (item->inherits("QQuickText") && !item->property("text").toString().isEmpty())
        box = paintedRect(item);
    if (!box.isNull()) {
        box = shownPart(item, box);
        if (!box.isNull())
            boxes.append({ item, box });
    }
    if (isControl)
        return;
    for (QQuickItem *child : item->childItems())
        collect(child, boxes);
}

// The nearest ancestor whose objectName is one of `cards`.
const QQuickItem *cardOf(const QQuickItem *item, const QStringList &cards)
{
    for (const QQuickItem *ancestor = item->parentItem(); ancestor; ancestor = ancestor->parentItem()) {
        if (cards.contains(ancestor->objectName()))
            return ancestor;
    }
    return nullptr;
}

struct Layout
{
    const char *name;
    QSize size;
    bool german;
};

// The phone and tablet sizes, the smallest window, and the first window on a 1366x768 screen with a
// 28-pixel panel.
const Layout layouts[] = {
    { "Phone", ContentWindow::phoneSize, false },
    { "PhoneGerman", ContentWindow::phoneSize, true },
    { "Tablet", ContentWindow::tabletSize, false },
    { "TabletGerman", ContentWindow::tabletSize, true },
    { "Minimum", ContentWindow::minimumSize, false },
    { "MinimumGerman", ContentWindow::minimumSize, true },
    { "Laptop", ContentWindow::initialSize(QRect(0, 28, 1366, 740)), false },
    { "LaptopGerman", ContentWindow::initialSize(QRect(0, 28, 1366, 740)), true },
};

struct LayoutTest : ::testing::TestWithParam<Layout>
{
    UiHarness harness;
    QTranslator german;

    void SetUp() override
    {
        if (GetParam().german) {
            ASSERT_TRUE(BrivantaApp::installTranslator(
                *QCoreApplication::instance(), german, QLocale(QLocale::German, QLocale::Germany)));
        }
        // The status card at its tallest: a reason and the switch.
        harness.withSystemSwitch = true;
        harness.systemSwitch.setReason(QStringLiteral("Names can still reach 192.168.1.1 directly."));
        harness.start(GetParam().size);
        harness.window().requestActivate();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&harness.window()));
    }

    void TearDown() override { QCoreApplication::removeTranslator(&german); }

    // No two boxes overlap, each lies inside its card, and in the window across (and down, where the
    // screen does not scroll).
    void expectTidy(QQuickItem *root, const QStringList &cards, bool scrolls)
    {
        QList<Box> boxes;
        collect(root, boxes);
        ASSERT_FALSE(boxes.isEmpty());
        const QRectF window(QPointF(0, 0), harness.window().size());
        for (qsizetype i = 0; i < boxes.size(); ++i) {
            const Box &box = boxes[i];
            const QRectF bounds
                = scrolls ? QRectF(0, box.rect.y(), window.width(), box.rect.height()) : window;
            EXPECT_TRUE(contains(bounds, box.rect)) << describe(box.item) << " leaves the window";
            if (const QQuickItem *card = cardOf(box.item, cards)) {
                EXPECT_TRUE(contains(sceneRect(card), box.rect))
                    << describe(box.item) << " spills out of " << card->objectName().toStdString();
            }
            for (qsizetype j = i + 1; j < boxes.size(); ++j) {
                EXPECT_FALSE(overlap(box.rect, boxes[j].rect))
                    << describe(box.item) << " overlaps " << describe(boxes[j].item);
            }
        }
    }

    // Tab reaches every shown control, each has an accessible name, and each is in view when focused.
    void expectKeyboardReachable(QQuickItem *root)
    {
        QList<Box> boxes;
        collect(root, boxes);
        QList<QQuickItem *> controls;
        for (const Box &box : boxes) {
            if (isButton(box.item) && box.item->isEnabled())
                controls.append(box.item);
        }
        ASSERT_FALSE(controls.isEmpty());
        QSet<QQuickItem *> reached;
        for (int press = 0; press < 3 * controls.size() && reached.size() < controls.size(); ++press) {
            QTest::keyClick(&harness.window(), Qt::Key_Tab);
            harness.settle();
            QQuickItem *focused = harness.window().activeFocusItem();
            if (!controls.contains(focused))
                continue;
            reached.insert(focused);
            EXPECT_TRUE(contains(QRectF(QPointF(0, 0), harness.window().size()), sceneRect(focused)))
                << describe(focused) << " has the focus out of view";
        }
        for (QQuickItem *control : controls) {
            EXPECT_TRUE(reached.contains(control)) << describe(control) << " never takes the focus";
            QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(control);
            ASSERT_NE(accessible, nullptr);
            EXPECT_EQ(accessible->role(), QAccessible::Button) << describe(control);
            EXPECT_FALSE(accessible->text(QAccessible::Name).isEmpty()) << describe(control);
        }
    }
};

TEST_P(LayoutTest, EveryOnboardingPageIsTidyAndItsButtonInView)
{
    QQuickItem *pager = harness.item("onboardingPager");
    const auto *list = pager->property("contentItem").value<QQuickItem *>();
    for (int page = 0; page < 9; ++page) {
        SCOPED_TRACE(page);
        pager->setProperty("currentIndex", page);
        QTRY_VERIFY(std::abs(list->property("contentX").toReal() - page * list->width()) < 0.5);
        harness.settle();
        expectTidy(harness.item("onboardingView"), { "onboardingPage" }, false);
    }
    expectKeyboardReachable(harness.item("onboardingView"));
}

TEST_P(LayoutTest, TheMainScreenIsTidyAndEveryControlTakesTheFocus)
{
    harness.leaveOnboarding();
    harness.dnsSettingsManager.release(testing::FakeDNSSettingsManager::Operation::Load);
    harness.runMainQueue();
    ASSERT_TRUE(harness.item("switchOnButton")->isVisible());
    expectTidy(harness.item("mainStack"),
        { "headerView", "statusCardBody", "privacyCard", "instructionsView", "testSection",
            "orvindoPromoCard", "velloquinPromoCard", "supportCard", "shareAndRateRow" },
        true);
    expectKeyboardReachable(harness.item("mainStack"));
}

INSTANTIATE_TEST_SUITE_P(Sizes, LayoutTest, ::testing::ValuesIn(layouts),
    [](const ::testing::TestParamInfo<Layout> &info) { return std::string(info.param.name); });

} // namespace
} // namespace brivanta
