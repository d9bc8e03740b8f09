// libFuzzer entry for the forwarder's DNS message handling: every parser on the same bytes, plus the
// properties the forwarder relies on: a query that parses gets replies that parse back to its question,
// a truncated answer fits the client's buffer, TTLs age exactly, cached answers come back with the asked
// ID and expire, and TCP framing splits a stream wherever it is cut.
#include "forwarder/dns_cache.h"
#include "forwarder/dns_message.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

using namespace brivanta::dns;

namespace {

// Stops the run naming the broken property, so a finding says what failed without a debugger.
void check(bool condition, const char *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "fuzz_dns_message: %s\n", what);
    std::abort();
}

quint32 ttlAt(QByteArrayView message, quint16 offset)
{
    const auto *d = reinterpret_cast<const uchar *>(message.data()) + offset;
    return (quint32(d[0]) << 24) | (quint32(d[1]) << 16) | (quint32(d[2]) << 8) | d[3];
}

// True when nameFromText(nameToText(name)) must give name back: no label holds a dot.
bool textRoundTrips(const QByteArray &wireName)
{
    for (qsizetype pos = 0; pos < wireName.size() && wireName[pos] != 0; pos += 1 + uchar(wireName[pos])) {
        if (QByteArrayView(wireName).sliced(pos + 1, uchar(wireName[pos])).contains('.'))
            return false;
    }
    return true;
}

void checkQuery(QByteArrayView bytes, const Query &query)
{
    check(query.udpSize >= minimumUdpSize, "udpSize below 512");
    check(query.hasEdns || (query.udpSize == minimumUdpSize && !query.dnssecOk), "EDNS fields without OPT");
    for (RCode rcode : { RCode::NoError, RCode::ServFail, RCode::NXDomain, RCode::Refused }) {
        const QByteArray reply = makeReply(query, rcode);
        const auto info = inspectResponse(reply);
        check(info && info->question == query.question && info->rcode == rcode && !info->truncated,
            "makeReply does not inspect back to its question");
        check(messageId(reply) == query.id, "makeReply lost the ID");
    }
    const QByteArray address = makeAddressReply(query, 0x7f000001, 30);
    const auto records = answerRecords(address);
    check(records && records->size() == 1 && (*records)[0].name == query.question.name
            && (*records)[0].rdata == QByteArray("\x7f\0\0\x01", 4) && (*records)[0].ttl == 30,
        "makeAddressReply does not read back");
    const auto addressInfo = inspectResponse(address);
    check(addressInfo && addressInfo->cacheTtl == 30u, "makeAddressReply TTL");

    // Asking the same question again gives the same question.
    const QueryParse again = parseQuery(makeQuery(query.id, query.question.name, query.question.type));
    check(again.query && again.query->question.name == query.question.name, "makeQuery round trip");
    if (textRoundTrips(query.question.name))
        check(nameFromText(nameToText(query.question.name)) == query.question.name, "name text round trip");

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
    if (info.truncated)
        check(!info.cacheTtl, "truncated answer cacheable");
    if (info.rcode != RCode::NoError && info.rcode != RCode::NXDomain)
        check(!info.cacheTtl, "error answer cacheable");

    QByteArray aged = bytes.toByteArray();
    ageTtls(aged, info.ttlOffsets, elapsed);
    check(aged.size() == bytes.size(), "ageTtls changed the size");
    for (quint16 offset : info.ttlOffsets) {
        check(offset >= headerSize && offset + 4 <= bytes.size(), "TTL offset out of the message");
        const quint32 before = ttlAt(bytes, offset);
        check(ttlAt(aged, offset) == (before > elapsed ? before - elapsed : 0), "ageTtls arithmetic");
    }

    DnsCache cache(8, 1 << 20);
    const CacheKey key { info.question.name, info.question.type, info.question.klass, false };
    const auto now = DnsCache::Clock::time_point {} + std::chrono::hours(1);
    cache.insert(key, bytes.toByteArray(), info, now);
    const auto hit = cache.lookup(key, 0xbeef, now + std::chrono::seconds(elapsed));
    const quint32 kept = std::min(info.cacheTtl.value_or(0), DnsCache::maximumTtl);
    check(hit.has_value() == (elapsed < kept), "cache kept the answer for the wrong time");
    if (hit) {
        check(messageId(*hit) == 0xbeef && hit->size() == bytes.size(), "cache hit ID or size");
        for (quint16 offset : info.ttlOffsets)
            check(ttlAt(*hit, offset) <= DnsCache::maximumTtl, "cached TTL above the cap");
        check(cache.size() == 1 && cache.bytes() > 0, "cache accounting");
    }
    const CacheKey other { key.name, key.type, key.klass, true };
    check(!cache.lookup(other, 0, now), "DO bit not part of the key");
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
        check(parsed.reply->size() == headerSize && messageId(*parsed.reply) == messageId(bytes),
            "error reply shape");
        const quint8 rcode = uchar((*parsed.reply)[3]) & 0xF;
        check(rcode == quint8(RCode::FormErr) || rcode == quint8(RCode::NotImp), "error reply rcode");
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
    const auto drain = [&] {
        while (const auto message = reader.next()) {
            check(bytes.sliced(consumed + 2, message->size()) == *message, "TCP frame content");
            check(frame(*message) == bytes.sliced(consumed, 2 + message->size()), "frame() disagrees");
            consumed += 2 + message->size();
        }
    };
    reader.append(bytes.first(cutAt));
    drain();
    reader.append(bytes.sliced(cutAt));
    drain();
    check(consumed + reader.buffered() == bytes.size(), "TCP bytes lost");
    check(reader.buffered() < 2
            || reader.buffered() < 2 + (uchar(data[consumed]) << 8 | uchar(data[consumed + 1])),
        "TCP frame left unread");
    return 0;
}
