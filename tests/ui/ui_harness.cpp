#include "ui_harness.h"

#include "support/launch_counter.h"

#include <QQuickWindow>
#include <QTest>
#include <gtest/gtest.h>

namespace brivanta::testing {

UiHarness::~UiHarness()
{
    m_window.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    // The render loop's shared context frees the textures of destroyed images only at the end of its
    // next frame; without one they would outlive the test (and be reported as leaks).
    QQuickWindow flush;
    flush.resize(1, 1);
    flush.show();
    if (QTest::qWaitForWindowExposed(&flush))
        flush.grabWindow();
}

void UiHarness::start(QSize size, bool onboarding)
{
    bundle.dictionary.insert("CFBundleName", "Brivanta");
    bundle.dictionary.insert("CFBundleShortVersionString", "1.0.0");
    m_model = std::make_unique<MainViewModel>(MainViewModel::Dependencies { .manager = dnsSettingsManager,
        .mainQueue = mainQueue,
        .environment = environment,
        .console = console,
        .incrementLaunchCount = [this] { incrementLaunchCount(preferences, application); },
        .makeTester = [this] { return std::make_unique<AdBlockTester>(httpClient, mainQueue); },
        .systemSwitch = withSystemSwitch ? &systemSwitch : nullptr });
    m_supportActions = std::make_unique<SupportActions>(SupportActions::Dependencies {
        .bundle = bundle, .device = device, .locale = locale, .application = application });
    m_window = std::make_unique<ContentWindow>(ViewServices::Objects { .mainViewModel = m_model.get(),
        .device = &device,
        .supportActions = m_supportActions.get(),
        .shareSheet = &shareSheet,
        .ratingPrompt = &ratingPrompt });
    application.setWindow(m_window.get());
    ASSERT_EQ(m_window->status(), QQuickView::Ready) << "ContentView did not load";
    m_window->resize(size);
    m_window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(m_window.get()));
    settle();
    if (!onboarding)
        leaveOnboarding();
}

QList<QQuickItem *> UiHarness::items(const QString &objectName, QQuickItem *root)
{
    root = root ? root : m_window->contentItem();
    QList<QQuickItem *> found;
    if (root->objectName() == objectName)
        found.append(root);
    for (QQuickItem *child : root->childItems())
        found += items(objectName, child);
    return found;
}

QQuickItem *UiHarness::item(const QString &objectName)
{
    const QList<QQuickItem *> found = items(objectName);
    const auto shown = std::find_if(found.begin(), found.end(), [](auto *item) { return item->isVisible(); });
    EXPECT_FALSE(found.isEmpty()) << "no item named " << objectName.toStdString();
    return shown != found.end() ? *shown : found.value(0);
}

void UiHarness::scrollTo(QQuickItem *target)
{
    QQuickItem *view = target->parentItem();
    while (view && view->objectName() != QLatin1String("mainScrollView"))
        view = view->parentItem();
    if (!view)
        return;
    const qreal top = target->mapToItem(view->property("contentItem").value<QQuickItem *>(), QPointF()).y();
    const qreal bottom = view->property("contentHeight").toReal() - view->height();
    view->setProperty("contentY", std::clamp(top - 16, 0.0, std::max(0.0, bottom)));
    settle();
}

void UiHarness::click(QQuickItem *target)
{
    ASSERT_NE(target, nullptr);
    scrollTo(target);
    QTest::mouseClick(m_window.get(), Qt::LeftButton, Qt::NoModifier,
        target->mapToScene(QPointF(target->width() / 2, target->height() / 2)).toPoint());
    QCoreApplication::processEvents();
}

void UiHarness::runAdBlockTest()
{
    click(item("testButton"));
    httpClient.completeAll([](const QUrl &url) {
        return answers(url.host()) ? httpStatus(200) : transportError(NSURLErrorCannotFindHost);
    });
    runMainQueue();
}

} // namespace brivanta::testing
