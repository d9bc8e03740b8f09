#pragma once

// How the views reach C++ objects made outside this module. QML_FOREIGN gives a type that does not know
// about QML (the main screen's model, the support actions, and the Qt backends the views draw: device,
// share sheet, rating prompt) a QML name, registered by qt_add_qml_module like any QML_ELEMENT, with no
// qmlRegister... call. The names are neutral (Device, ShareSheet, RatingPrompt), so the views never
// depend on which backend is behind them. Each is a singleton whose create() makes nothing: it returns
// the object the application attached to this engine (ViewServices), so tests can run many engines, each
// with its own objects. Asking on an engine without them stops the process, rather than leaving a view
// that silently draws nothing.

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

struct ShareSheetForeign
{
    Q_GADGET
    QML_FOREIGN(brivanta::DesktopShareSheet)
    QML_NAMED_ELEMENT(ShareSheet)
    QML_SINGLETON

public:
    static DesktopShareSheet *create(QQmlEngine *engine, QJSEngine *)
    {
        return attachedSingleton(engine, &ViewServices::Objects::shareSheet);
    }
};

struct RatingPromptForeign
{
    Q_GADGET
    QML_FOREIGN(brivanta::DesktopRatingPrompt)
    QML_NAMED_ELEMENT(RatingPrompt)
    QML_SINGLETON

public:
    static DesktopRatingPrompt *create(QQmlEngine *engine, QJSEngine *)
    {
        return attachedSingleton(engine, &ViewServices::Objects::ratingPrompt);
    }
};

} // namespace brivanta
