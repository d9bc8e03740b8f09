#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace brivanta {

// Qt 6.4 picks a font per character, so a symbol that the text font also has ("⚠" in DejaVu) is drawn
// as a plain glyph even when U+FE0F asks for the emoji form. This wraps every emoji run in a span of the
// colour emoji font, for views that show such texts as rich text.
class EmojiText : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    static constexpr const char *emojiFontFamily = "Noto Color Emoji";

    // The text as HTML: escaped, line feeds as <br>, emoji runs in the emoji font.
    Q_INVOKABLE static QString richText(const QString &text);
    static bool isEmojiScalar(char32_t scalar);
};

} // namespace brivanta
