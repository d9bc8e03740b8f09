#pragma once

// The QML faces of objects made outside this module: the main screen's model and tester, and the desktop
// backends the views draw. The singletons are the objects attached to the engine (ViewServices).

#include "dns/main_view_model.h"
#include "model/fatal.h"
#include "platform/qt/desktop_device.h"
#include "platform/qt/desktop_rating_prompt.h"
#include "platform/qt/desktop_share_sheet.h"
#include "ui/support_actions.h"
#include "ui/view_services.h"

#include <QQmlEngine>
#include <QtQml/qqmlregistration.h>

namespace brivanta {

template <typename T> T *attachedSingleton(QQmlEngine *engine, T *ViewServices::Objects::*member)
{
    T *object = ViewServices::of(engine).*member;
    if (!object)
        fatal("A view singleton was not attached to the QML engine");
    // The application owns it; the engine must never delete it.
    QJSEngine::setObjectOwnership(object, QJSEngine::CppOwnership);
    return object;
}

struct MainViewModelForeign
{
    Q_GADGET
    QML_FOREIGN(brivanta::MainViewModel)
    QML_NAMED_ELEMENT(MainViewModel)
    QML_SINGLETON

public:
    static MainViewModel *create(QQmlEngine *engine, QJSEngine *)
    {
        return attachedSingleton(engine, &ViewServices::Objects::mainViewModel);
    }
};

// The device, whose idiom follows the window's width: the views' tablet test.
struct DeviceForeign
{
    Q_GADGET
    QML_FOREIGN(brivanta::DesktopDevice)
    QML_NAMED_ELEMENT(Device)
    QML_SINGLETON

public:
    static DesktopDevice *create(QQmlEngine *engine, QJSEngine *)
    {
        return attachedSingleton(engine, &ViewServices::Objects::device);
    }
};

struct SupportActionsForeign
{
    Q_GADGET
    QML_FOREIGN(brivanta::SupportActions)
    QML_NAMED_ELEMENT(SupportActions)
    QML_SINGLETON

public:
    static SupportActions *create(QQmlEngine *engine, QJSEngine *)
    {
        return attachedSingleton(engine, &ViewServices::Objects::supportActions);
    }
};

struct DesktopShareSheetForeign
{
    Q_GADGET
    QML_FOREIGN(brivanta::DesktopShareSheet)
    QML_NAMED_ELEMENT(DesktopShareSheet)
    QML_SINGLETON

public:
    static DesktopShareSheet *create(QQmlEngine *engine, QJSEngine *)
    {
        return attachedSingleton(engine, &ViewServices::Objects::shareSheet);
    }
};

struct DesktopRatingPromptForeign
{
    Q_GADGET
    QML_FOREIGN(brivanta::DesktopRatingPrompt)
    QML_NAMED_ELEMENT(DesktopRatingPrompt)
    QML_SINGLETON

public:
    static DesktopRatingPrompt *create(QQmlEngine *engine, QJSEngine *)
    {
        return attachedSingleton(engine, &ViewServices::Objects::ratingPrompt);
    }
};

} // namespace brivanta
