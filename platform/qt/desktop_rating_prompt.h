#pragma once

#include <QObject>
#include <QUrl>

namespace brivanta {

// The in-app rating prompt: the UI shows it while visible and offers the review link.
class DesktopRatingPrompt final : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool visible READ isVisible NOTIFY visibleChanged)

public:
    explicit DesktopRatingPrompt(QUrl reviewUrl, QObject *parent = nullptr);

    void show();
    [[nodiscard]] bool isVisible() const { return m_visible; }

    // Opens the review link outside the app and closes the prompt.
    Q_INVOKABLE void openReview();
    Q_INVOKABLE void dismiss();

signals:
    void visibleChanged();

private:
    void setVisible(bool visible);

    QUrl m_reviewUrl;
    bool m_visible = false;
};

} // namespace brivanta
