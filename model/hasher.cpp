#include "model/hasher.h"

#include <QHashFunctions>

namespace brivanta {

namespace {

// splitmix64's finaliser: spreads every input bit over the whole word.
quint64 mix(quint64 x)
{
    x ^= x >> 30;
    x *= 0xbf58476d1ce4e5b9ULL;
    x ^= x >> 27;
    x *= 0x94d049bb133111ebULL;
    x ^= x >> 31;
    return x;
}

} // namespace

Hasher::Hasher(size_t seed)
    : m_state(mix(static_cast<quint64>(seed) + 0x9e3779b97f4a7c15ULL))
{ }

void Hasher::combine(quint64 value)
{
    m_state = mix(m_state ^ (mix(value) + 0x9e3779b97f4a7c15ULL + (m_state << 6) + (m_state >> 2)));
}

void Hasher::combine(const QString &value)
{
    const QString canonical = value.normalized(QString::NormalizationForm_C);
    combine(static_cast<quint64>(canonical.size()));
    combine(static_cast<quint64>(qHash(canonical, 0)));
}

void Hasher::combine(const QStringList &values)
{
    combine(static_cast<quint64>(values.size()));
    for (const QString &value : values)
        combine(value);
}

void Hasher::combine(const QUuid &value)
{
    combine(static_cast<quint64>(qHash(value, 0)));
}

void Hasher::combine(const QUrl &value)
{
    // Qt's URL hash agrees with its URL equality.
    combine(static_cast<quint64>(qHash(value, 0)));
}

size_t Hasher::finalize() const
{
    return static_cast<size_t>(mix(m_state));
}

bool canonicallyEqual(const QString &a, const QString &b)
{
    if (a == b)
        return true;
    return a.normalized(QString::NormalizationForm_C) == b.normalized(QString::NormalizationForm_C);
}

bool canonicallyEqual(const QStringList &a, const QStringList &b)
{
    if (a.size() != b.size())
        return false;
    for (qsizetype i = 0; i < a.size(); ++i) {
        if (!canonicallyEqual(a.at(i), b.at(i)))
            return false;
    }
    return true;
}

bool canonicallyEqual(const std::optional<QString> &a, const std::optional<QString> &b)
{
    if (a.has_value() != b.has_value())
        return false;
    return !a || canonicallyEqual(*a, *b);
}

} // namespace brivanta
