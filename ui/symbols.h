#pragma once

#include <QColor>
#include <QObject>
#include <QStringList>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

namespace brivanta {

// The one table from the system symbol names the views use to the vendored SVGs that draw them
// (Phosphor, and Tabler where Phosphor has no such shield). "apple.logo" draws a neutral store glyph.
class Symbols : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    // The image for the symbol; an empty URL (and a warning) for a name not in the table.
    static QUrl source(const QString &name);
    // The symbol drawn in one colour, as an image URL of the "symbol" image provider; an empty URL (and
    // a warning) for a name not in the table.
    Q_INVOKABLE static QUrl image(const QString &name, const QColor &color);
    // Every name in the table.
    static QStringList names();
};

} // namespace brivanta
