#include "ui/symbol_image_provider.h"

#include "ui/symbols.h"

#include <QPainter>
#include <QSvgRenderer>

namespace brivanta {

SymbolImageProvider::SymbolImageProvider()
    : QQuickImageProvider(QQuickImageProvider::Image)
{ }

QImage SymbolImageProvider::requestImage(const QString &id, QSize *size, const QSize &requestedSize)
{
    constexpr qsizetype argbDigits = 8;
    const qsizetype slash = id.indexOf(QLatin1Char('/'));
    if (slash != argbDigits)
        return QImage();
    const QColor color = QColor::fromString(QLatin1Char('#') + id.left(slash));
    const QUrl file = Symbols::source(id.mid(slash + 1));
    if (!color.isValid() || file.isEmpty())
        return QImage();

    QSvgRenderer renderer(QLatin1Char(':') + file.path());
    if (!renderer.isValid())
        return QImage();
    const QSize natural = renderer.defaultSize();
    QSize target = natural;
    if (requestedSize.width() > 0 && requestedSize.height() > 0)
        target = requestedSize;
    else if (requestedSize.width() > 0)
        target = natural.scaled(requestedSize.width(), INT_MAX, Qt::KeepAspectRatio);
    else if (requestedSize.height() > 0)
        target = natural.scaled(INT_MAX, requestedSize.height(), Qt::KeepAspectRatio);

    QImage image(target, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QSizeF drawn = QSizeF(natural).scaled(QSizeF(target), Qt::KeepAspectRatio);
    renderer.render(&painter,
        QRectF(QPointF((target.width() - drawn.width()) / 2, (target.height() - drawn.height()) / 2), drawn));
    // Keep the drawing's coverage, replace its colour.
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    painter.end();

    if (size)
        *size = image.size();
    return image;
}

} // namespace brivanta
