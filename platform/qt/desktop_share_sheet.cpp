#include "platform/qt/desktop_share_sheet.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>

namespace brivanta {

void DesktopShareSheet::present(const ShareSheet &sheet)
{
    QStringList texts;
    QUrl url;
    for (const ActivityItem &item : sheet.activityItems) {
        if (const auto *text = std::get_if<QString>(&item))
            texts.append(*text);
        else if (const auto *link = std::get_if<QUrl>(&item); link && url.isEmpty())
            url = *link;
    }
    m_text = texts.join(u'\n');
    m_url = url;
    m_popover = sheet.popover.has_value();
    m_sourceRect = m_popover ? sheet.popover->sourceRect : QRectF();
    m_arrows = m_popover ? sheet.popover->permittedArrowDirections : unsigned(PopoverArrowDirectionAny);
    emit contentChanged();
    if (!m_visible) {
        m_visible = true;
        emit visibleChanged();
    }
}

QString DesktopShareSheet::sharedText() const
{
    if (m_url.isEmpty())
        return m_text;
    QString shared = m_text;
    if (!shared.isEmpty() && !shared.endsWith(u'\n'))
        shared += u'\n';
    return shared + urlText();
}

void DesktopShareSheet::copyToClipboard()
{
    QGuiApplication::clipboard()->setText(sharedText());
    dismiss();
}

void DesktopShareSheet::sendByEmail()
{
    // Unlike the support request, everything but unreserved characters is escaped here: an "&" in the
    // text must not end the body.
    QDesktopServices::openUrl(
        QUrl(QStringLiteral("mailto:?body=") + QString::fromLatin1(QUrl::toPercentEncoding(sharedText())),
            QUrl::StrictMode));
    dismiss();
}

void DesktopShareSheet::dismiss()
{
    if (!m_visible)
        return;
    m_visible = false;
    emit visibleChanged();
}

} // namespace brivanta
