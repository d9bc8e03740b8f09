#include "platform/qt/desktop_rating_prompt.h"

#include <QDesktopServices>

namespace brivanta {

DesktopRatingPrompt::DesktopRatingPrompt(QUrl reviewUrl, QObject *parent)
    : QObject(parent)
    , m_reviewUrl(std::move(reviewUrl))
{ }

void DesktopRatingPrompt::show()
{
    setVisible(true);
}

void DesktopRatingPrompt::openReview()
{
    QDesktopServices::openUrl(m_reviewUrl);
    setVisible(false);
}

void DesktopRatingPrompt::dismiss()
{
    setVisible(false);
}

void DesktopRatingPrompt::setVisible(bool visible)
{
    if (visible == m_visible)
        return;
    m_visible = visible;
    emit visibleChanged();
}

} // namespace brivanta
