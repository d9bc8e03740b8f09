#include "model/resolver_list.h"

#include "model/json_form.h"

#include <QStringDecoder>

namespace brivanta {

QString rawValue(const std::vector<Resolver> &resolvers)
{
    const QByteArray bytes = encodeJSON(resolvers);
    if (bytes.isEmpty())
        return QStringLiteral("[]");
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return QStringLiteral("[]");
    return text;
}

std::optional<std::vector<Resolver>> resolversFromRawValue(const QString &rawValue)
{
    // A text holding a lone surrogate has no UTF-8 bytes to read.
    if (!rawValue.isValidUtf16())
        return std::nullopt;
    return decodeJSON<std::vector<Resolver>>(rawValue.toUtf8());
}

} // namespace brivanta
