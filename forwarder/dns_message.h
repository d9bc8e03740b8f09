#pragma once

// DNS messages as the forwarder needs them (RFC 1035, 6891 EDNS, 7766 TCP, 2308 negative caching).
// Everything here faces arbitrary network input: every read is bounds-checked, compression pointers
// may only point backwards, and nothing allocates more than the input justifies.

#include <QByteArray>
#include <QByteArrayView>
#include <optional>
#include <vector>

namespace brivanta::dns {

enum class RCode : quint8 { NoError = 0, FormErr = 1, ServFail = 2, NXDomain = 3, NotImp = 4, Refused = 5 };
namespace RRType {
constexpr quint16 A = 1, NS = 2, CNAME = 5, SOA = 6, AAAA = 28, OPT = 41;
}
constexpr quint16 classIN = 1;
constexpr qsizetype headerSize = 12;
constexpr quint16 minimumUdpSize = 512; // a client without EDNS
constexpr quint16 maximumUdpSize = 1232; // what we advertise (DNS flag day 2020)

struct Question
{
    QByteArray name; // wire form, uncompressed, ASCII letters folded to lower case
    quint16 type = 0;
    quint16 klass = 0;
    bool operator==(const Question &) const = default;
};
QByteArray nameToText(QByteArrayView wireName); // "example.com", "." for the root
std::optional<QByteArray> nameFromText(QByteArrayView text); // lower-cased wire form

struct Query
{
    quint16 id = 0;
    bool recursionDesired = false;
    bool checkingDisabled = false;
    Question question;
    bool hasEdns = false;
    quint16 udpSize = minimumUdpSize; // the client's advertised size, at least 512
    bool dnssecOk = false;
};
struct QueryParse
{
    std::optional<Query> query; // a well-formed query
    std::optional<QByteArray> reply; // otherwise FORMERR/NOTIMP to send back, or nothing: drop
};
QueryParse parseQuery(QByteArrayView message);

// Replies made here: the question echoed, QR and RA set, RD and CD copied, an OPT when the query had one.
QByteArray makeReply(const Query &query, RCode rcode);
QByteArray makeAddressReply(const Query &query, quint32 ipv4, quint32 ttl);

void setId(QByteArray &message, quint16 id);
quint16 messageId(QByteArrayView message);

// An upstream answer, checked and indexed for the cache.
struct ResponseInfo
{
    RCode rcode = RCode::NoError;
    bool truncated = false;
    Question question;
    // Lowest TTL of the answer and authority records, or for NXDOMAIN/NODATA the SOA's negative TTL;
    // none when the answer must not be cached.
    std::optional<quint32> cacheTtl;
    std::vector<quint16> ttlOffsets; // every TTL field but the OPT's
};
std::optional<ResponseInfo> inspectResponse(QByteArrayView message);

// Lowers each TTL by elapsedSeconds, not below zero.
void ageTtls(QByteArray &message, const std::vector<quint16> &ttlOffsets, quint32 elapsedSeconds);

// A response too large for the client's UDP buffer becomes its header and question with TC set.
QByteArray truncateForUdp(QByteArrayView response, const Query &query, quint16 limit);

// For the bootstrap resolver.
QByteArray makeQuery(quint16 id, QByteArrayView wireName, quint16 type);
struct ResourceRecord
{
    QByteArray name;
    quint16 type = 0;
    quint16 klass = 0;
    quint32 ttl = 0;
    QByteArray rdata;
};
std::optional<std::vector<ResourceRecord>> answerRecords(QByteArrayView response);

// TCP: two-byte length framing, several messages per connection.
QByteArray frame(QByteArrayView message);
class TcpFrameReader
{
public:
    void append(QByteArrayView bytes);
    std::optional<QByteArray> next();
    qsizetype buffered() const { return m_buffer.size() - m_start; }

private:
    QByteArray m_buffer;
    qsizetype m_start = 0;
};

} // namespace brivanta::dns
