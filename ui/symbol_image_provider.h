#pragma once

#include <QQuickImageProvider>

namespace brivanta {

// Draws a symbol's vendored SVG in one colour, for `image://symbol/<aarrggbb>/<symbol name>`.
//
// The tint is painted into the image itself rather than applied by a shader or by Qt Quick Controls'
// IconImage: the software renderer draws it all the same, and each colour of a symbol is an ordinary
// entry of the pixmap cache.
class SymbolImageProvider : public QQuickImageProvider
{
public:
    static constexpr auto providerId = "symbol";

    SymbolImageProvider();

    // Null for an id that does not parse or names no symbol. Without a requested size the SVG's own
    // size is used; with one the drawing keeps its aspect ratio and is centred.
    QImage requestImage(const QString &id, QSize *size, const QSize &requestedSize) override;
};

} // namespace brivanta
