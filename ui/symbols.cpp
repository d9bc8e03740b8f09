#include "ui/symbols.h"

#include "ui/symbol_image_provider.h"

#include <QLoggingCategory>
#include <array>
#include <utility>

namespace brivanta {

namespace {

struct Entry
{
    const char *name;
    const char *file; // under the module's icons/ folder
};

constexpr std::array<Entry, 25> table { {
    { "shield.lefthalf.filled", "tabler/filled/shield-half.svg" },
    { "network", "phosphor/regular/globe.svg" },
    { "hare", "phosphor/regular/rabbit.svg" },
    { "battery.100", "phosphor/regular/battery-full.svg" },
    { "antenna.radiowaves.left.and.right", "phosphor/regular/broadcast.svg" },
    { "checkmark.seal.fill", "phosphor/fill/seal-check-fill.svg" },
    { "lock.shield", "tabler/outline/shield-lock.svg" },
    { "eye.slash.fill", "phosphor/fill/eye-slash-fill.svg" },
    { "icloud.and.arrow.down", "phosphor/regular/cloud-arrow-down.svg" },
    { "hand.raised.fill", "phosphor/fill/hand-palm-fill.svg" },
    { "shield.checkerboard", "phosphor/fill/shield-checkered-fill.svg" },
    { "shield.slash", "phosphor/regular/shield-slash.svg" },
    { "lock.shield.fill", "tabler/filled/shield-lock.svg" },
    { "1.circle.fill", "phosphor/fill/number-circle-one-fill.svg" },
    { "2.circle.fill", "phosphor/fill/number-circle-two-fill.svg" },
    { "3.circle.fill", "phosphor/fill/number-circle-three-fill.svg" },
    { "4.circle.fill", "phosphor/fill/number-circle-four-fill.svg" },
    { "checkmark.circle.fill", "phosphor/fill/check-circle-fill.svg" },
    { "envelope.fill", "phosphor/fill/envelope-simple-fill.svg" },
    { "envelope.open.fill", "phosphor/fill/envelope-simple-open-fill.svg" },
    { "apple.logo", "phosphor/fill/storefront-fill.svg" },
    { "square.and.arrow.up.fill", "phosphor/fill/export-fill.svg" },
    { "star.fill", "phosphor/fill/star-fill.svg" },
    { "xmark", "phosphor/regular/x.svg" },
    { "doc.on.doc", "phosphor/regular/copy.svg" },
} };

} // namespace

QUrl Symbols::source(const QString &name)
{
    for (const Entry &entry : table) {
        if (name == QLatin1String(entry.name))
            return QUrl(QStringLiteral("qrc:/Brivanta/icons/") + QLatin1String(entry.file));
    }
    qWarning("No image for the symbol \"%s\"", qPrintable(name));
    return QUrl();
}

QUrl Symbols::image(const QString &name, const QColor &color)
{
    if (source(name).isEmpty())
        return QUrl();
    // HexArgb keeps the alpha; its '#' would start a URL fragment, so it is left out.
    return QUrl(
        QStringLiteral("image://%1/%2/%3")
            .arg(QLatin1String(SymbolImageProvider::providerId), color.name(QColor::HexArgb).mid(1), name));
}

QStringList Symbols::names()
{
    QStringList list;
    for (const Entry &entry : table)
        list.append(QLatin1String(entry.name));
    return list;
}

} // namespace brivanta
