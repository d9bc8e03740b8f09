#include "ui/brivanta_app.h"
#include "ui_harness.h"

#include <QAccessible>
#include <QSet>
#include <QTest>
#include <QTranslator>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

// What the user sees of one text or control, in scene coordinates.
using Box = std::pair<QQuickItem *, QRectF>;

const auto describe = [](const QQuickItem *item) {
    return (item->objectName() + " \"" + item->property("text").toString().left(40) + '"').toStdString();
};
const auto sceneRect = [](const QQuickItem *item) { return item->mapRectToScene(item->boundingRect()); };
const auto contains = [](const QRectF &outer, const QRectF &inner) {
    return outer.adjusted(-0.5, -0.5, 0.5, 0.5).contains(inner);
};

// A text's painted lines, which may run past its item when it is too narrow or too short for them.
QRectF paintedRect(const QQuickItem *text)
{
    const auto get = [text](const char *name) { return text->property(name).toReal(); };
    const qreal spare = text->width() - get("leftPadding") - get("rightPadding") - get("contentWidth");
    const int align = text->property("horizontalAlignment").toInt();
    const qreal share = align & Qt::AlignHCenter ? 0.5 : align & Qt::AlignRight ? 1 : 0;
    return text->mapRectToScene(QRectF(
        get("leftPadding") + share * spare, get("topPadding"), get("contentWidth"), get("contentHeight")));
}

// The part of a box that is not clipped away; empty when the item is hidden or scrolled out of view.
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

// Every shown text and control under `item`; a button's own label counts as part of the button.
void collect(QQuickItem *item, QList<Box> &boxes)
{
    if (!item->isVisible())
        return;
    const bool isControl = item->inherits("QQuickAbstractButton")
        || item->objectName().endsWith(QLatin1String("PageIndicator"));
    const bool isText = item->inherits("QQuickText") && !item->property("text").toString().isEmpty();
    QRectF box = isControl ? sceneRect(item) : isText ? paintedRect(item) : QRectF();
    if (!box.isNull() && !(box = shownPart(item, box)).isNull())
        boxes.append({ item, box });
    for (QQuickItem *child : isControl ? QList<QQuickItem *>() : item->childItems())
        collect(child, boxes);
}

// The phone and tablet sizes, the smallest window, and the first window on a 1366x768 screen with a
// 28-pixel panel; each in English and in German.
const std::pair<const char *, QSize> sizes[] = { { "Phone", ContentWindow::phoneSize },
    { "Tablet", ContentWindow::tabletSize }, { "Minimum", ContentWindow::minimumSize },
    { "Laptop", ContentWindow::initialSize(QRect(0, 28, 1366, 740)) } };

struct LayoutTest : ::testing::TestWithParam<std::tuple<std::pair<const char *, QSize>, bool>>
{
    testing::UiHarness harness;
    QTranslator german;

    void SetUp() override
    {
        ASSERT_TRUE(!std::get<1>(GetParam())
            || BrivantaApp::installTranslator(*QCoreApplication::instance(), german, QLocale("de_DE")));
        // The status card at its tallest: a reason and the switch.
        harness.withSystemSwitch = true;
        harness.systemSwitch.setReason("Names can still reach 192.168.1.1 directly.");
        harness.start(std::get<0>(GetParam()).second);
        harness.window().requestActivate();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&harness.window()));
    }

    void TearDown() override { QCoreApplication::removeTranslator(&german); }

    // No two boxes overlap, each lies inside its card, and in the window across (and down, where the
    // screen does not scroll).
    QList<Box> expectTidy(QQuickItem *root, const QStringList &cards, bool scrolls)
    {
        QList<Box> boxes;
        collect(root, boxes);
        EXPECT_FALSE(boxes.isEmpty());
        const QRectF window(QPointF(0, 0), harness.window().size());
        for (qsizetype i = 0; i < boxes.size(); ++i) {
            const auto &[item, rect] = boxes[i];
            EXPECT_TRUE(contains(scrolls ? QRectF(0, rect.y(), window.width(), rect.height()) : window, rect))
                << describe(item) << " leaves the window";
            const QQuickItem *card = item->parentItem();
            while (card && !cards.contains(card->objectName()))
                card = card->parentItem();
            EXPECT_TRUE(!card || contains(sceneRect(card), rect))
                << describe(item) << " spills out of " << card->objectName().toStdString();
            for (qsizetype j = i + 1; j < boxes.size(); ++j) {
                const QRectF shared = rect.intersected(boxes[j].second);
                EXPECT_FALSE(shared.width() > 0.5 && shared.height() > 0.5)
                    << describe(item) << " overlaps " << describe(boxes[j].first);
            }
        }
        return boxes;
    }

    // Tab reaches every shown control, each has an accessible name, and each is in view when focused.
    void expectKeyboardReachable(const QList<Box> &boxes)
    {
        QSet<QQuickItem *> controls;
        for (const auto &[item, rect] : boxes)
            if (item->inherits("QQuickAbstractButton") && item->isEnabled())
                controls.insert(item);
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
            const QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(control);
            EXPECT_TRUE(accessible && accessible->role() == QAccessible::Button
                && !accessible->text(QAccessible::Name).isEmpty())
                << describe(control) << " has no accessible button name";
        }
    }
};

TEST_P(LayoutTest, EveryOnboardingPageIsTidyAndItsButtonInView)
{
    QQuickItem *pager = harness.item("onboardingPager");
    const auto *list = pager->property("contentItem").value<QQuickItem *>();
    QList<Box> boxes;
    for (int page = 0; page < 9; ++page) {
        SCOPED_TRACE(page);
        pager->setProperty("currentIndex", page);
        QTRY_VERIFY(std::abs(list->property("contentX").toReal() - page * list->width()) < 0.5);
        harness.settle();
        boxes = expectTidy(harness.item("onboardingView"), { "onboardingPage" }, false);
    }
    expectKeyboardReachable(boxes);
}

TEST_P(LayoutTest, TheMainScreenIsTidyAndEveryControlTakesTheFocus)
{
    harness.leaveOnboarding();
    harness.load();
    ASSERT_TRUE(harness.item("switchOnButton")->isVisible());
    expectKeyboardReachable(expectTidy(harness.item("mainStack"),
        { "headerView", "statusCardBody", "privacyCard", "instructionsView", "testSection",
            "orvindoPromoCard", "velloquinPromoCard", "supportCard", "shareAndRateRow" },
        true));
}

INSTANTIATE_TEST_SUITE_P(Sizes, LayoutTest, ::testing::Combine(::testing::ValuesIn(sizes), ::testing::Bool()),
    [](const auto &info) {
        return std::string(std::get<0>(info.param).first) + (std::get<1>(info.param) ? "German" : "");
    });

} // namespace
} // namespace brivanta
