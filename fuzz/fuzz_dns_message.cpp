// libFuzzer entry for the forwarder's DNS message handling: every parser on the same bytes, plus the
// properties the forwarder relies on: a query that parses gets replies that parse back to its question,
// a truncated answer fits the client's buffer, cached answers come back with the asked ID, and TCP
// framing splits a stream wherever it is cut.
#include "forwarder/dns_cache.h"
#include "forwarder/dns_message.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace brivanta::dns;

namespace {

void check(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));

    const QueryParse parsed = parseQuery(bytes);
    check(!(parsed.query && parsed.reply));
    if (parsed.reply)
        check(parsed.reply->size() == headerSize && messageId(*parsed.reply) == messageId(bytes));
    if (parsed.query) {
        const Query &query = *parsed.query;
        for (RCode rcode : { RCode::NoError, RCode::ServFail, RCode::NXDomain }) {
            const QByteArray reply = makeReply(query, rcode);
            const auto info = inspectResponse(reply);
            check(info && info->question == query.question && info->rcode == rcode && messageId(reply) == query.id);
        }
        const QByteArray address = makeAddressReply(query, 0x7f000001, 0);
        const auto records = answerRecords(address);
        check(records && records->size() == 1 && (*records)[0].name == query.question.name);
        // The query's own bytes, taken as an answer, must never come back larger than the client allows.
        check(truncateForUdp(bytes, query, minimumUdpSize).size() <= minimumUdpSize);
    }

    if (auto info = inspectResponse(bytes)) {
        QByteArray aged = bytes.toByteArray();
        ageTtls(aged, info->ttlOffsets, 1);
        check(aged.size() == bytes.size());
        DnsCache cache(8, 1 << 20);
        const CacheKey key { info->question.name, info->question.type, info->question.klass, false };
        const auto now = DnsCache::Clock::now();
        cache.insert(key, bytes.toByteArray(), *info, now);
        if (auto hit = cache.lookup(key, 0xbeef, now))
            check(messageId(*hit) == 0xbeef && hit->size() == bytes.size());
        else
            check(!info->cacheTtl || *info->cacheTtl == 0);
    }
    answerRecords(bytes);

    // The same bytes as a TCP stream, cut in two at a place the input chooses.
    TcpFrameReader reader;
    const qsizetype cutAt = size ? data[0] % (bytes.size() + 1) : 0;
    reader.append(bytes.first(cutAt));
    qsizetype consumed = 0;
    while (auto message = reader.next())
        consumed += 2 + message->size();
    reader.append(bytes.sliced(cutAt));
    while (auto message = reader.next())
        consumed += 2 + message->size();
    check(consumed + reader.buffered() == bytes.size());
    return 0;
}
