#pragma once

// The canary: a name only brivanta-dohd answers, with an address only someone who knows its per-boot
// secret can predict. If the system resolver returns that address for a fresh name, lookups really go
// through the forwarder. Header-only so that the app can check it without linking the forwarder.

#include <QByteArrayView>
#include <QCryptographicHash>

namespace brivanta {

constexpr const char *canarySuffix = "canary.brivanta.test";

// 127.b0.b1.b2 from SHA-256(secret || nonce), in host byte order.
inline quint32 canaryAddress(QByteArrayView secret, QByteArrayView nonce)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(secret);
    hash.addData(nonce);
    const QByteArray digest = hash.result();
    return (quint32(127) << 24) | (quint32(uchar(digest[0])) << 16) | (quint32(uchar(digest[1])) << 8)
        | quint32(uchar(digest[2]));
}

} // namespace brivanta
