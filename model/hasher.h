#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>
#include <QUuid>
#include <cstddef>
#include <optional>

namespace brivanta {

// Feeds the fields of a record, in order, into one running hash. Strings are fed in their canonical
// (NFC) form so that values that compare equal by canonical equivalence also hash alike.
class Hasher
{
public:
    explicit Hasher(size_t seed = 0);

    void combine(quint64 value);
    void combine(qint64 value) { combine(static_cast<quint64>(value)); }
    void combine(const QString &value);
    void combine(const QStringList &values);
    void combine(const QUuid &value);
    void combine(const QUrl &value);

    template <typename T> void combine(const std::optional<T> &value)
    {
        if (!value) {
            combine(quint64 { 0 });
            return;
        }
        combine(quint64 { 1 });
        combine(*value);
    }

    template <typename Record>
    requires requires(const Record &record, Hasher &hasher) { record.hash(hasher); }
    void combine(const Record &record) { record.hash(*this); }

    size_t finalize() const;

private:
    quint64 m_state;
};

// Strings compare by canonical equivalence, not by code units.
bool canonicallyEqual(const QString &a, const QString &b);
bool canonicallyEqual(const QStringList &a, const QStringList &b);
bool canonicallyEqual(const std::optional<QString> &a, const std::optional<QString> &b);

// qHash for every record that can feed itself into a Hasher (found by argument-dependent lookup).
template <typename Record>
requires requires(const Record &record, Hasher &hasher)
{
    record.hash(hasher);
}
size_t qHash(const Record &record, size_t seed = 0)
{
    Hasher hasher(seed);
    record.hash(hasher);
    return hasher.finalize();
}

} // namespace brivanta
