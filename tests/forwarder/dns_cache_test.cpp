#include "forwarder/dns_cache.h"

#include <gtest/gtest.h>

using namespace brivanta::dns;
using namespace std::chrono_literals;

namespace {

const DnsCache::Clock::time_point t0 = DnsCache::Clock::time_point {} + 1h;

const auto queryFor = [](const char *name) {
    return parseQuery(makeQuery(0, nameFromText(name).value(), RRType::A)).query.value();
};
const auto keyFor = [](const Query &q) {
    return CacheKey { q.question.name, q.question.type, q.question.klass, false };
};
const auto answer = [](const Query &q, quint32 ttl) { return makeAddressReply(q, 0x0a000001, ttl); };

void store(
    DnsCache &cache, const CacheKey &key, const QByteArray &response, DnsCache::Clock::time_point at = t0)
{
    cache.insert(key, response, inspectResponse(response).value(), at);
}

// The TTL of the cached answer, which must carry the asker's ID; nothing on a miss.
std::optional<quint32> ttlOf(DnsCache &cache, const CacheKey &key, DnsCache::Clock::time_point at = t0)
{
    const auto hit = cache.lookup(key, 0x4242, at);
    if (!hit)
        return std::nullopt;
    EXPECT_EQ(messageId(*hit), 0x4242);
    return answerRecords(*hit).value().at(0).ttl;
}

} // namespace

TEST(DnsCache, AnswersAgeAndExpireWithTheirTtlCappedAtADayAndUncacheableOnesAreNotStored)
{
    const Query q = queryFor("a.test");
    const struct
    {
        QByteArray response;
        std::chrono::milliseconds after;
        std::optional<quint32> left; // none: a miss
    } cases[] = { { answer(q, 60), 0ms, 60 }, { answer(q, 60), 999ms, 60 }, { answer(q, 60), 10s, 50 },
        { answer(q, 60), 59500ms, 1 }, { answer(q, 60), 60s, std::nullopt },
        { answer(q, 7 * 86400), 0ms, 86400 }, { answer(q, 7 * 86400), 86399s, 1 },
        { answer(q, 0x7fffffff), 0ms, 86400 }, { answer(q, 0x7fffffff), 86400s, std::nullopt },
        { answer(q, 0), 0ms, std::nullopt },
        { makeReply(q, RCode::NXDomain), 0ms, std::nullopt }, // no SOA to take a TTL from
        { makeReply(q, RCode::ServFail), 0ms, std::nullopt } };
    for (const auto &c : cases) {
        SCOPED_TRACE(&c - cases);
        DnsCache cache(100, 1 << 20);
        store(cache, keyFor(q), c.response);
        EXPECT_EQ(ttlOf(cache, keyFor(q), t0 + c.after), c.left);
        EXPECT_EQ(cache.size(), c.left ? 1u : 0u) << "nothing uncacheable kept, an expired entry dropped";
    }
}

TEST(DnsCache, LeastRecentlyUsedGoesFirstByEntriesAndBytes)
{
    const Query queries[] = { queryFor("a.test"), queryFor("b.test"), queryFor("c.test") };
    DnsCache probe(10, 1 << 20);
    store(probe, keyFor(queries[0]), answer(queries[0], 60));
    const std::size_t oneEntry = probe.bytes();
    DnsCache tooSmall(10, oneEntry - 1);
    store(tooSmall, keyFor(queries[0]), answer(queries[0], 60));
    EXPECT_EQ(tooSmall.size(), 0u) << "larger than the whole cache";

    // Room for two by count, then room for two by bytes.
    for (const auto &[entries, bytes] : { std::pair { std::size_t(2), std::size_t(1) << 20 },
             std::pair { std::size_t(10), 2 * oneEntry + oneEntry / 2 } }) {
        DnsCache cache(entries, bytes);
        store(cache, keyFor(queries[0]), answer(queries[0], 60));
        store(cache, keyFor(queries[1]), answer(queries[1], 60));
        EXPECT_TRUE(cache.lookup(keyFor(queries[0]), 1, t0 + 1s)); // a is now the most recent
        store(cache, keyFor(queries[2]), answer(queries[2], 60), t0 + 2s);
        EXPECT_EQ(cache.size(), 2u) << entries;
        EXPECT_LE(cache.bytes(), bytes);
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(cache.lookup(keyFor(queries[i]), 1, t0 + 3s).has_value(), i != 1) << entries << i;
        cache.clear();
        EXPECT_EQ(cache.size(), 0u);
        EXPECT_EQ(cache.bytes(), 0u);
    }
}
