#include "forwarder/dns_cache.h"

#include <gtest/gtest.h>

using namespace brivanta::dns;
using namespace std::chrono_literals;

namespace {

const DnsCache::Clock::time_point t0 = DnsCache::Clock::time_point {} + 1h;

const auto queryFor = [](const char *name) {
    return parseQuery(makeQuery(0, nameFromText(name).value(), RRType::A)).query.value();
};
const auto keyFor = [](const char *name) { return CacheKey { *nameFromText(name), RRType::A, classIN }; };
const auto answer = [](const char *name, quint32 ttl) { return makeAddressReply(queryFor(name), 1, ttl); };

void store(DnsCache &cache, const char *name, const QByteArray &response, DnsCache::Clock::time_point at = t0)
{
    cache.insert(keyFor(name), response, inspectResponse(response).value(), at);
}

// The TTL of the cached answer, which must carry the asker's ID; nothing on a miss.
std::optional<quint32> ttlOf(DnsCache &cache, const char *name, DnsCache::Clock::time_point at)
{
    const auto hit = cache.lookup(keyFor(name), 0x4242, at);
    if (!hit)
        return std::nullopt;
    EXPECT_EQ(messageId(*hit), 0x4242);
    return answerRecords(*hit).value().at(0).ttl;
}

} // namespace

TEST(DnsCache, AnswersAgeAndExpireWithTheirTtlCappedAtADayAndUncacheableOnesAreNotStored)
{
    const struct
    {
        QByteArray response;
        std::chrono::milliseconds after;
        std::optional<quint32> left; // none: a miss
    } cases[] = { { answer("a", 60), 0ms, 60 }, { answer("a", 60), 999ms, 60 }, { answer("a", 60), 10s, 50 },
        { answer("a", 60), 59500ms, 1 }, { answer("a", 60), 60s, std::nullopt },
        { answer("a", 7 * 86400), 0ms, 86400 }, { answer("a", 7 * 86400), 86399s, 1 },
        { answer("a", 0x7fffffff), 0ms, 86400 }, { answer("a", 0x7fffffff), 86400s, std::nullopt },
        { answer("a", 0), 0ms, std::nullopt },
        { makeReply(queryFor("a"), RCode::NXDomain), 0ms, std::nullopt }, // no SOA to take a TTL from
        { makeReply(queryFor("a"), RCode::ServFail), 0ms, std::nullopt } };
    for (const auto &c : cases) {
        SCOPED_TRACE(&c - cases);
        DnsCache cache(100, 1 << 20);
        store(cache, "a", c.response);
        EXPECT_EQ(ttlOf(cache, "a", t0 + c.after), c.left);
        EXPECT_EQ(cache.size(), c.left ? 1u : 0u) << "nothing uncacheable kept, an expired entry dropped";
    }
}

// A client that did not ask for DNSSEC records must not get an answer cached for one that did.
TEST(DnsCache, AnAnswerIsServedOnlyForItsNameTypeAndDoBit)
{
    DnsCache cache(10, 1 << 20);
    store(cache, "a", answer("a", 60));
    const QByteArray a = *nameFromText("a");
    for (const CacheKey &other :
        { CacheKey { a, RRType::A, classIN, true }, CacheKey { a, RRType::AAAA, classIN }, keyFor("b") })
        EXPECT_FALSE(cache.lookup(other, 1, t0));
    EXPECT_TRUE(cache.lookup(keyFor("a"), 1, t0));
}

TEST(DnsCache, LeastRecentlyUsedGoesFirstByEntriesAndBytes)
{
    DnsCache probe(10, 1 << 20);
    store(probe, "a", answer("a", 60));
    const std::size_t oneEntry = probe.bytes();
    DnsCache tooSmall(10, oneEntry - 1);
    store(tooSmall, "a", answer("a", 60));
    EXPECT_EQ(tooSmall.size(), 0u) << "larger than the whole cache";

    const char *names[] = { "a", "b", "c" };
    for (const std::size_t entries : { 2, 10 }) { // room for two by count, then room for two by bytes
        const std::size_t bytes = entries == 2 ? 1 << 20 : 2 * oneEntry + oneEntry / 2;
        DnsCache cache(entries, bytes);
        store(cache, "a", answer("a", 60));
        store(cache, "b", answer("b", 60));
        EXPECT_TRUE(cache.lookup(keyFor("a"), 1, t0 + 1s)); // a is now the most recent
        store(cache, "c", answer("c", 60), t0 + 2s);
        EXPECT_EQ(cache.size(), 2u) << entries;
        EXPECT_LE(cache.bytes(), bytes);
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(cache.lookup(keyFor(names[i]), 1, t0 + 3s).has_value(), i != 1) << entries << i;
        cache.clear();
        EXPECT_EQ(cache.size() + cache.bytes(), 0u);
    }
}
