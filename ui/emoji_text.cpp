#include "ui/emoji_text.h"

#include <QStringView>

namespace brivanta {

namespace {

// Joiners and modifiers that belong to the emoji before them.
bool isEmojiComponent(char32_t scalar)
{
    return scalar == 0xFE0F || scalar == 0x200D || scalar == 0x20E3
        || (scalar >= 0x1F3FB && scalar <= 0x1F3FF) || (scalar >= 0xE0020 && scalar <= 0xE007F);
}

} // namespace

bool EmojiText::isEmojiScalar(char32_t scalar)
{
    return (scalar >= 0x1F000 && scalar <= 0x1FAFF) // pictographs, emoticons, transport, flags
        || (scalar >= 0x2600 && scalar <= 0x27BF) // miscellaneous symbols and dingbats
        || (scalar >= 0x2B00 && scalar <= 0x2BFF); // arrows and stars
}

QString EmojiText::richText(const QString &text)
{
    QString html;
    html.reserve(text.size() * 2);
    bool inRun = false;
    auto closeRun = [&] {
        if (inRun)
            html += QStringLiteral("</span>");
        inRun = false;
    };

    const QList<uint> scalars = text.toUcs4();
    for (const uint value : scalars) {
        const auto scalar = static_cast<char32_t>(value);
        const bool emoji = isEmojiScalar(scalar) || (inRun && isEmojiComponent(scalar));
        if (emoji && !inRun) {
            html += QStringLiteral("<span style=\"font-family:'%1'\">").arg(QLatin1String(emojiFontFamily));
            inRun = true;
        } else if (!emoji) {
            closeRun();
        }
        switch (scalar) {
        case U'&':
            html += QStringLiteral("&amp;");
            break;
        case U'<':
            html += QStringLiteral("&lt;");
            break;
        case U'>':
            html += QStringLiteral("&gt;");
            break;
        case U'"':
            html += QStringLiteral("&quot;");
            break;
        case U'\n':
            html += QStringLiteral("<br>");
            break;
        default:
            html += QString::fromUcs4(&scalar, 1);
        }
    }
    closeRun();
    return html;
}

} // namespace brivanta
