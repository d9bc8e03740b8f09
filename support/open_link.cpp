#include "support/open_link.h"

#include "platform/application_services.h"

namespace brivanta {

std::optional<QUrl> makeURL(const QString &text)
{
    const QUrl url(text, QUrl::StrictMode);
    if (text.isEmpty() || !url.isValid())
        return std::nullopt;
    return url;
}

void openLink(ApplicationServices &application, const QString &text)
{
    if (const auto url = makeURL(text))
        application.openURL(*url);
}

WindowScene *presentingWindowScene(ApplicationServices &application)
{
    const std::vector<Scene *> scenes = application.connectedScenes();
    if (scenes.empty() || scenes.front() == nullptr)
        return nullptr;
    return scenes.front()->asWindowScene();
}

} // namespace brivanta
