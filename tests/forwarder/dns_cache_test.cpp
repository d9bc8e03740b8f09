#include "forwarder/dns_cache.h"

#include <gtest/gtest.h>

using namespace brivanta::dns;
using namespace std::chrono_literals;

namespace {

const DnsCache::Clock::time_point t0 = DnsCache::Clock::time_point {} + 1h;

Query queryFor(const char *text, quint16 type = RRType::A)
{
    Query query;
    query.id = 1;
    query.question = { nameFromText(text).value(), type, classIN };
    return query;
}

CacheKey keyFor(const Query &query, bool dnssecOk = false)
{
    return { query.question.name, query.question.type, query.question.klass, dnssecOk };
}

// An answer holding one A record with the given TTL, as upstream would send it.
QByteArray answer(const Query &query, quint32 ttl)
{
    return makeAddressReply(query, 0x0a000001, ttl);
}

std::optional<quint32> firstTtl(const std::optional<QByteArray> &message)
{
    if (!message)
        return std::nullopt;
    const auto records = answerRecords(*message);
    if (!records || records->empty())
        return std::nullopt;
    return records->front().ttl;
}

bool store(DnsCache &cache, const CacheKey &key, const QByteArray &response, DnsCache::Clock::time_point at)
{
    const auto info = inspectResponse(response);
    if (!info)
        return false;
    cache.insert(key, response, *info, at);
    return true;
}

} // namespace

TEST(DnsCache, AnswersAgeAndExpireWithTheirTtl)
{
    DnsCache cache(100, 1 << 20);
    const Query query = queryFor("a.test");
    ASSERT_TRUE(store(cache, keyFor(query), answer(query, 60), t0));

    const struct
    {
        std::chrono::milliseconds after;
        std::optional<quint32> ttl;
    } steps[] = { { 0ms, 60 }, { 999ms, 60 }, { 10s, 50 }, { 59500ms, 1 }, { 60s, std::nullopt } };
    for (const auto &s : steps) {
        const auto hit = cache.lookup(keyFor(query), 0x4242, t0 + s.after);
        EXPECT_EQ(firstTtl(hit), s.ttl) << s.after.count();
        EXPECT_EQ(hit ? messageId(*hit) : 0x4242, 0x4242);
    }
    EXPECT_EQ(cache.size(), 0u) << "the expired entry is dropped";
    EXPECT_EQ(cache.bytes(), 0u);
}

TEST(DnsCache, StoresNothingUncacheable)
{
    const Query query = queryFor("a.test");
    const struct
    {
        const char *what;
        QByteArray response;
        std::size_t maxBytes;
    } cases[] = {
        { "TTL 0", answer(query, 0), 1 << 20 },
        { "no SOA on a negative answer", makeReply(query, RCode::NXDomain), 1 << 20 },
        { "SERVFAIL", makeReply(query, RCode::ServFail), 1 << 20 },
        { "larger than the whole cache", answer(query, 60), 100 },
    };
    for (const auto &c : cases) {
        DnsCache cache(10, c.maxBytes);
        ASSERT_TRUE(store(cache, keyFor(query), c.response, t0)) << c.what;
        EXPECT_EQ(cache.size(), 0u) << c.what;
        EXPECT_FALSE(cache.lookup(keyFor(query), 1, t0)) << c.what;
    }
}

TEST(DnsCache, KeysSeparateDnssecOkTypeAndName)
{
    DnsCache cache(100, 1 << 20);
    const Query a = queryFor("a.test");
    ASSERT_TRUE(store(cache, keyFor(a, true), answer(a, 11), t0));
    ASSERT_TRUE(store(cache, keyFor(a, false), answer(a, 22), t0));
    EXPECT_EQ(firstTtl(cache.lookup(keyFor(a, true), 1, t0)), 11u);
    EXPECT_EQ(firstTtl(cache.lookup(keyFor(a, false), 1, t0)), 22u);
    EXPECT_FALSE(cache.lookup(keyFor(queryFor("a.test", RRType::AAAA)), 1, t0));
    EXPECT_FALSE(cache.lookup(keyFor(queryFor("b.test")), 1, t0));

    // The same key again replaces the entry instead of adding one.
    ASSERT_TRUE(store(cache, keyFor(a, false), answer(a, 33), t0));
    EXPECT_EQ(cache.size(), 2u);
    EXPECT_EQ(firstTtl(cache.lookup(keyFor(a, false), 1, t0)), 33u);
}

TEST(DnsCache, LeastRecentlyUsedGoesFirstByEntriesAndBytes)
{
    const Query queries[] = { queryFor("a.test"), queryFor("b.test"), queryFor("c.test") };
    DnsCache probe(10, 1 << 20);
    ASSERT_TRUE(store(probe, keyFor(queries[0]), answer(queries[0], 60), t0));
    const std::size_t oneEntry = probe.bytes();

    // Room for two by count, then room for two by bytes.
    for (const auto &[entries, bytes] : { std::pair { std::size_t(2), std::size_t(1) << 20 },
             std::pair { std::size_t(10), 2 * oneEntry + oneEntry / 2 } }) {
        DnsCache cache(entries, bytes);
        ASSERT_TRUE(store(cache, keyFor(queries[0]), answer(queries[0], 60), t0));
        ASSERT_TRUE(store(cache, keyFor(queries[1]), answer(queries[1], 60), t0));
        EXPECT_TRUE(cache.lookup(keyFor(queries[0]), 1, t0 + 1s)); // a is now the most recent
        ASSERT_TRUE(store(cache, keyFor(queries[2]), answer(queries[2], 60), t0 + 2s));
        EXPECT_EQ(cache.size(), 2u) << entries;
        EXPECT_LE(cache.bytes(), bytes);
        EXPECT_TRUE(cache.lookup(keyFor(queries[0]), 1, t0 + 3s)) << entries;
        EXPECT_FALSE(cache.lookup(keyFor(queries[1]), 1, t0 + 3s)) << entries;
        EXPECT_TRUE(cache.lookup(keyFor(queries[2]), 1, t0 + 3s)) << entries;
        cache.clear();
        EXPECT_EQ(cache.size(), 0u);
        EXPECT_EQ(cache.bytes(), 0u);
    }
}

TEST(DnsCache, LongTtlsAreCappedAtADay)
{
    DnsCache cache(10, 1 << 20);
    const Query query = queryFor("a.test");
    for (quint32 ttl : { 7u * 86400u, 0x7fffffffu }) {
        ASSERT_TRUE(store(cache, keyFor(query), answer(query, ttl), t0));
        EXPECT_EQ(firstTtl(cache.lookup(keyFor(query), 1, t0)), DnsCache::maximumTtl);
        EXPECT_EQ(firstTtl(cache.lookup(keyFor(query), 1, t0 + 86399s)), 1u);
        EXPECT_FALSE(cache.lookup(keyFor(query), 1, t0 + 86400s));
    }
}
