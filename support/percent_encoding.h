#pragma once

#include <QString>

namespace brivanta {

// Percent-encodes the text's UTF-8 bytes except those in the URL query's allowed set (alphanumerics
// and !$&'()*+,-./:;=?@_~), the set the phone platform's query encoding uses. "&", "=", "?", "/" and "+"
// therefore pass unescaped. A text that cannot be encoded (unpaired surrogates) gives "".
QString percentEncodedForURLQuery(const QString &text);

} // namespace brivanta
