#include "support/percent_encoding.h"

#include <QByteArray>
#include <QStringView>

namespace brivanta {

namespace {

// The URL query's allowed characters besides ASCII letters and digits. "#", "%", "[", "]" and the
// space are not among them.
constexpr QByteArrayView queryAllowedPunctuation = "!$&'()*+,-./:;=?@_~";

bool isQueryAllowed(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
        || queryAllowedPunctuation.contains(c);
}

} // namespace

QString percentEncodedForURLQuery(const QString &text)
{
    if (!QStringView(text).isValidUtf16())
        return QString();
    static constexpr char hexDigits[] = "0123456789ABCDEF";
    const QByteArray utf8 = text.toUtf8();
    QByteArray encoded;
    encoded.reserve(utf8.size() * 3);
    for (const char c : utf8) {
        if (isQueryAllowed(c)) {
            encoded.append(c);
        } else {
            const auto byte = static_cast<unsigned char>(c);
            encoded.append('%');
            encoded.append(hexDigits[byte >> 4]);
            encoded.append(hexDigits[byte & 0xF]);
        }
    }
    return QString::fromLatin1(encoded);
}

} // namespace brivanta
