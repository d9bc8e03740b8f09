#pragma once

#include "forwarder/dns_message.h"

#include <QByteArray>
#include <QHashFunctions>
#include <chrono>
#include <list>
#include <optional>
#include <unordered_map>

namespace brivanta::dns {

struct CacheKey
{
    QByteArray name;
    quint16 type = 0;
    quint16 klass = 0;
    bool dnssecOk = false;
    bool operator==(const CacheKey &) const = default;
};

struct CacheKeyHash
{
    size_t operator()(const CacheKey &key) const noexcept
    {
        // The process's random seed: query names come from the network and must not pick the buckets.
        return qHash(key.name,
            QHashSeed::globalSeed() ^ (size_t(key.type) << 17) ^ (size_t(key.klass) << 1)
                ^ size_t(key.dnssecOk));
    }
};

// Answers by (name, type, class, DO bit), kept no longer than their TTL (RFC 2308's for negative ones),
// bounded in entries and bytes with the least recently used dropped first. TTLs are aged on the way out.
class DnsCache
{
public:
    using Clock = std::chrono::steady_clock;
    static constexpr quint32 maximumTtl = 86400;

    DnsCache(std::size_t maxEntries, std::size_t maxBytes);

    // Stores nothing when the answer may not be cached or is larger than the whole cache.
    void insert(const CacheKey &key, QByteArray response, const ResponseInfo &info, Clock::time_point now);
    // A copy with the ID set and TTLs aged; none when absent or expired.
    std::optional<QByteArray> lookup(const CacheKey &key, quint16 id, Clock::time_point now);
    void clear();
    std::size_t size() const { return m_index.size(); }
    std::size_t bytes() const { return m_bytes; }

private:
    struct Entry
    {
        CacheKey key;
        QByteArray response;
        std::vector<quint16> ttlOffsets;
        Clock::time_point stored;
        Clock::time_point expires;
        std::size_t cost = 0;
    };
    using List = std::list<Entry>;

    void erase(List::iterator it);

    std::size_t m_maxEntries;
    std::size_t m_maxBytes;
    std::size_t m_bytes = 0;
    List m_lru; // most recently used first
    std::unordered_map<CacheKey, List::iterator, CacheKeyHash> m_index;
};

} // namespace brivanta::dns
