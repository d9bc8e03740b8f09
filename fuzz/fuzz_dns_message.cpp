// libFuzzer entry for the forwarder's DNS message handling: every parser on the same bytes, plus the
// properties the forwarder relies on (replies, truncation, TTL ageing, cache, TCP framing).
#include "forwarder/dns_cache.h"
#include "forwarder/dns_message.h"

#include <QtEndian>
#include <chrono>
#include <cstdio>
#include <cstdlib>

using namespace brivanta::dns;

namespace {

// Stops the run naming the broken property, so a finding says what failed without a debugger.
void check(bool condition, const char *what)
{
    if (!condition) {
        std::fprintf(stderr, "fuzz_dns_message: %s\n", what);
        std::abort();
    }
}

void checkQuery(QByteArrayView bytes, const Query &query)
{
    check(query.udpSize >= minimumUdpSize, "udpSize below 512");
    check(query.hasEdns || (query.udpSize == minimumUdpSize && !query.dnssecOk), "EDNS fields without OPT");
    for (RCode rcode : { RCode::NoError, RCode::ServFail, RCode::NXDomain, RCode::Refused }) {
        const QByteArray reply = makeReply(query, rcode);
        const auto info = inspectResponse(reply);
        check(
            info && info->question == query.question && info->rcode == rcode && messageId(reply) == query.id,
            "makeReply does not inspect back to its question and ID");
    }
    // Any answer, cut for any buffer that can hold at least its question, fits that buffer.
    const qsizetype needed = headerSize + query.question.name.size() + 4 + (query.hasEdns ? 11 : 0);
    for (quint16 limit : { quint16(needed), minimumUdpSize, query.udpSize }) {
        const QByteArray cut = truncateForUdp(bytes, query, limit);
        check(cut.size() <= limit, "truncateForUdp exceeds the limit");
        if (cut.size() != bytes.size() && bytes.size() >= headerSize)
            check(cut.size() == needed && (uchar(cut[2]) & 0x02), "truncated answer without TC");
    }
}

void checkResponse(QByteArrayView bytes, const ResponseInfo &info, quint32 elapsed)
{
    check(answerRecords(bytes).has_value(), "inspectResponse accepts what answerRecords rejects");
    if (info.truncated || (info.rcode != RCode::NoError && info.rcode != RCode::NXDomain))
        check(!info.cacheTtl, "truncated or error answer cacheable");

    QByteArray aged = bytes.toByteArray();
    ageTtls(aged, info.ttlOffsets, elapsed);
    for (quint16 offset : info.ttlOffsets) {
        check(offset >= headerSize && offset + 4 <= bytes.size(), "TTL offset out of the message");
        const quint32 before = qFromBigEndian<quint32>(bytes.data() + offset);
        check(qFromBigEndian<quint32>(aged.constData() + offset) == (before > elapsed ? before - elapsed : 0),
            "ageTtls arithmetic");
    }

    DnsCache cache(8, 1 << 20);
    const CacheKey key { info.question.name, info.question.type, info.question.klass, false };
    const auto now = DnsCache::Clock::time_point {} + std::chrono::hours(1);
    cache.insert(key, bytes.toByteArray(), info, now);
    const auto hit = cache.lookup(key, 0xbeef, now + std::chrono::seconds(elapsed));
    check(hit.has_value() == (elapsed < std::min(info.cacheTtl.value_or(0), DnsCache::maximumTtl)),
        "cache kept the answer for the wrong time");
    check(!hit || (messageId(*hit) == 0xbeef && hit->size() == bytes.size()), "cache hit ID or size");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    // One input byte picks the elapsed time and the TCP cut, so both vary with the corpus.
    const quint8 choice = size ? data[size - 1] : 0;

    const QueryParse parsed = parseQuery(bytes);
    check(!(parsed.query && parsed.reply), "both a query and a reply");
    check(parsed.query || parsed.reply || size < headerSize || (data[2] & 0x80), "dropped a readable query");
    if (parsed.reply) {
        const quint8 rcode = uchar((*parsed.reply)[3]) & 0xF;
        check(parsed.reply->size() == headerSize && messageId(*parsed.reply) == messageId(bytes)
                && (rcode == quint8(RCode::FormErr) || rcode == quint8(RCode::NotImp)),
            "error reply shape");
    }
    if (parsed.query)
        checkQuery(bytes, *parsed.query);
    if (const auto info = inspectResponse(bytes))
        checkResponse(bytes, *info, choice);
    if (const auto records = answerRecords(bytes))
        check(records->size() == size_t(uchar(data[6]) << 8 | uchar(data[7])), "answer count");

    // The same bytes as a TCP stream, cut in two where the input says.
    TcpFrameReader reader;
    const qsizetype cutAt = choice % (bytes.size() + 1);
    qsizetype consumed = 0;
    for (QByteArrayView part : { bytes.first(cutAt), bytes.sliced(cutAt) }) {
        reader.append(part);
        while (const auto message = reader.next()) {
            check(frame(*message) == bytes.sliced(consumed, 2 + message->size()), "TCP frame content");
            consumed += 2 + message->size();
        }
    }
    check(consumed + reader.buffered() == bytes.size(), "TCP bytes lost");
    check(reader.buffered() < 2
            || reader.buffered() < 2 + (uchar(data[consumed]) << 8 | uchar(data[consumed + 1])),
        "TCP frame left unread");
    return 0;
}
