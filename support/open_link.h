#pragma once

#include <QString>
#include <QUrl>
#include <optional>

namespace brivanta {

class ApplicationServices;
class WindowScene;

// Makes a URL from a text the way the phone platform's URL parser does: nothing when the text is empty or
// not a well-formed URL.
std::optional<QUrl> makeURL(const QString &text);

// Opens a link outside the app. A text that is not a URL is ignored; the outcome is not observed.
void openLink(ApplicationServices &application, const QString &text);

// The scene that presents sheets and prompts: the first connected scene in the phone platform's own order,
// used only when it is a window scene. Deliberately no filtering by activation state and no fallback.
WindowScene *presentingWindowScene(ApplicationServices &application);

} // namespace brivanta
