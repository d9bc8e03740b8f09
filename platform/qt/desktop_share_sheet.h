#pragma once

#include "platform/application_services.h"

#include <QObject>
#include <QRectF>
#include <QUrl>

namespace brivanta {

// The in-app share sheet: the UI shows it while visible, with the text, the link and two hand-offs
// (copy to the clipboard, send by e-mail). As a popover it floats at sourceRect's centre, arrowless
// when permittedArrowDirections is 0; otherwise it rises from the bottom like a phone's sheet.
class DesktopShareSheet final : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool visible READ isVisible NOTIFY visibleChanged)
    Q_PROPERTY(QString text READ text NOTIFY contentChanged)
    Q_PROPERTY(QString urlText READ urlText NOTIFY contentChanged)
    Q_PROPERTY(QRectF sourceRect READ sourceRect NOTIFY contentChanged)
    Q_PROPERTY(bool centred READ isCentred NOTIFY contentChanged)

public:
    using QObject::QObject;

    // Shows the sheet with the items' texts joined and their first link.
    void present(const ShareSheet &sheet);

    [[nodiscard]] bool isVisible() const { return m_visible; }
    [[nodiscard]] QString text() const { return m_text; }
    [[nodiscard]] QString urlText() const { return m_url.toString(QUrl::FullyEncoded); }
    [[nodiscard]] QRectF sourceRect() const { return m_sourceRect; }
    // A popover anchored to a point with no arrow: drawn centred on that point.
    [[nodiscard]] bool isCentred() const { return m_popover && m_arrows == PopoverArrowDirectionNone; }

    // What both hand-offs carry: the text, then the link on a line of its own.
    [[nodiscard]] QString sharedText() const;

    Q_INVOKABLE void copyToClipboard();
    Q_INVOKABLE void sendByEmail();
    Q_INVOKABLE void dismiss();

signals:
    void visibleChanged();
    void contentChanged();

private:
    bool m_visible = false;
    QString m_text;
    QUrl m_url;
    bool m_popover = false;
    QRectF m_sourceRect;
    unsigned m_arrows = PopoverArrowDirectionAny;
};

} // namespace brivanta
