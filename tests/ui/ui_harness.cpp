#include "ui_harness.h"

#include "support/launch_counter.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <gtest/gtest.h>

namespace brivanta::testing {

namespace {

void collect(QQuickItem *item, const QString &objectName, QList<QQuickItem *> &found)
{
    if (item->objectName() == objectName)
        found.append(item);
    for (QQuickItem *child : item->childItems())
        collect(child, objectName, found);
}

QQuickItem *scrollViewOf(QQuickItem *item)
{
    for (QQuickItem *ancestor = item->parentItem(); ancestor; ancestor = ancestor->parentItem()) {
        if (ancestor->objectName() == QLatin1String("mainScrollView"))
            return ancestor;
    }
    return nullptr;
}

} // namespace

UiHarness::UiHarness()
    : ratingPrompt(QUrl(QStringLiteral("https://apps.apple.com/app/id6742517203?action=write-review")))
{
    bundle.dictionary.insert(QStringLiteral("CFBundleName"), QStringLiteral("Brivanta"));
    bundle.dictionary.insert(QStringLiteral("CFBundleShortVersionString"), QStringLiteral("1.0.0"));
    locale.languages = { QStringLiteral("de-DE") };
    locale.region = QStringLiteral("DE");
    locale.languageNames.insert(QStringLiteral("de-DE"), QStringLiteral("German (Germany)"));
    locale.regionNames.insert(QStringLiteral("DE"), QStringLiteral("Germany"));
}

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

void UiHarness::start(QSize size)
{
    m_model = std::make_unique<MainViewModel>(MainViewModel::Dependencies {
        .manager = dnsSettingsManager,
        .mainQueue = mainQueue,
        .environment = environment,
        .console = console,
        .incrementLaunchCount = [this] { incrementLaunchCount(preferences, application); },
        .makeTester = [this]() -> std::unique_ptr<AdBlockTester> {
            if (testDomains.isEmpty())
                return std::make_unique<AdBlockTester>(httpClient, mainQueue);
            return AdBlockTester::withTestDomainsForTesting(httpClient, mainQueue, testDomains);
        },
        .systemSwitch = withSystemSwitch ? &systemSwitch : nullptr,
    });
    m_supportActions = std::make_unique<SupportActions>(SupportActions::Dependencies {
        .bundle = bundle,
        .device = device,
        .locale = locale,
        .application = application,
    });
    m_window = std::make_unique<ContentWindow>(ViewServices::Objects {
        .mainViewModel = m_model.get(),
        .device = &device,
        .supportActions = m_supportActions.get(),
        .shareSheet = &shareSheet,
        .ratingPrompt = &ratingPrompt,
    });
    application.setWindow(m_window.get());
    ASSERT_EQ(m_window->status(), QQuickView::Ready) << "ContentView did not load";
    m_window->resize(size);
    m_window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(m_window.get()));
    settle();
}

void UiHarness::settle()
{
    QCoreApplication::processEvents();
    // A grab polishes every item and renders one frame.
    m_window->grabWindow();
}

void UiHarness::resize(QSize size)
{
    m_window->resize(size);
    settle();
}

QList<QQuickItem *> UiHarness::items(const QString &objectName)
{
    QList<QQuickItem *> found;
    collect(m_window->contentItem(), objectName, found);
    return found;
}

QQuickItem *UiHarness::item(const QString &objectName)
{
    const QList<QQuickItem *> found = items(objectName);
    for (QQuickItem *candidate : found) {
        if (candidate->isVisible())
            return candidate;
    }
    if (!found.isEmpty())
        return found.first();
    ADD_FAILURE() << "no item named " << objectName.toStdString();
    return nullptr;
}

void UiHarness::leaveOnboarding()
{
    m_window->rootObject()->setProperty("showOnboarding", false);
    settle();
}

void UiHarness::click(QQuickItem *target)
{
    ASSERT_NE(target, nullptr);
    if (QQuickItem *scrollView = scrollViewOf(target)) {
        const qreal contentHeight = scrollView->property("contentHeight").toReal();
        const QPointF inContent = target->mapToItem(
            scrollView->property("contentItem").value<QQuickItem *>(), QPointF(0, target->height() / 2));
        const qreal wanted = inContent.y() - scrollView->height() / 2;
        scrollView->setProperty(
            "contentY", std::clamp(wanted, 0.0, std::max(0.0, contentHeight - scrollView->height())));
        settle();
    }
    const QPoint centre = target->mapToScene(QPointF(target->width() / 2, target->height() / 2)).toPoint();
    QTest::mouseClick(m_window.get(), Qt::LeftButton, Qt::NoModifier, centre);
    QCoreApplication::processEvents();
}

void UiHarness::runMainQueue()
{
    mainQueue.runAll();
    settle();
}

} // namespace brivanta::testing
