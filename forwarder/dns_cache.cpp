#include "forwarder/dns_cache.h"

#include <algorithm>

namespace brivanta::dns {

namespace {

// What an entry costs besides its bytes: list node, map node, key copy.
constexpr std::size_t entryOverhead = 160;

// No record leaves the cache claiming to live longer than the cache itself would keep it.
void capTtls(QByteArray &response, const std::vector<quint16> &ttlOffsets)
{
    for (quint16 offset : ttlOffsets) {
        if (offset + 4 > response.size())
            continue;
        auto *d = reinterpret_cast<uchar *>(response.data()) + offset;
        const quint32 ttl = (quint32(d[0]) << 24) | (quint32(d[1]) << 16) | (quint32(d[2]) << 8) | d[3];
        if (ttl <= DnsCache::maximumTtl)
            continue;
        const quint32 capped = ttl & 0x80000000u ? 0 : DnsCache::maximumTtl;
        d[0] = uchar(capped >> 24);
        d[1] = uchar(capped >> 16);
        d[2] = uchar(capped >> 8);
        d[3] = uchar(capped);
    }
}

} // namespace

DnsCache::DnsCache(std::size_t maxEntries, std::size_t maxBytes)
    : m_maxEntries(maxEntries)
    , m_maxBytes(maxBytes)
{ }

void DnsCache::insert(
    const CacheKey &key, QByteArray response, const ResponseInfo &info, Clock::time_point now)
{
    if (!info.cacheTtl || *info.cacheTtl == 0 || m_maxEntries == 0)
        return;
    const std::size_t cost = std::size_t(response.size()) + std::size_t(key.name.size())
        + info.ttlOffsets.size() * sizeof(quint16) + entryOverhead;
    if (cost > m_maxBytes)
        return;
    if (auto found = m_index.find(key); found != m_index.end())
        erase(found->second);
    while (!m_lru.empty() && (m_index.size() >= m_maxEntries || m_bytes + cost > m_maxBytes))
        erase(std::prev(m_lru.end()));
    const quint32 ttl = std::min(*info.cacheTtl, maximumTtl);
    capTtls(response, info.ttlOffsets);
    m_lru.push_front(
        Entry { key, std::move(response), info.ttlOffsets, now, now + std::chrono::seconds(ttl), cost });
    m_index.emplace(key, m_lru.begin());
    m_bytes += cost;
}

std::optional<QByteArray> DnsCache::lookup(const CacheKey &key, quint16 id, Clock::time_point now)
{
    const auto found = m_index.find(key);
    if (found == m_index.end())
        return std::nullopt;
    const List::iterator it = found->second;
    if (now >= it->expires) {
        erase(it);
        return std::nullopt;
    }
    m_lru.splice(m_lru.begin(), m_lru, it);
    QByteArray answer = it->response;
    setId(answer, id);
    const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(now - it->stored).count();
    if (elapsed > 0)
        ageTtls(answer, it->ttlOffsets, quint32(elapsed));
    return answer;
}

void DnsCache::clear()
{
    m_index.clear();
    m_lru.clear();
    m_bytes = 0;
}

void DnsCache::erase(List::iterator it)
{
    m_bytes -= it->cost;
    m_index.erase(it->key);
    m_lru.erase(it);
}

} // namespace brivanta::dns
