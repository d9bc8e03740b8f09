#include "forwarder/dns_message.h"

#include <QList>
#include <algorithm>

namespace brivanta::dns {

namespace {

constexpr quint16 flagQR = 0x8000;
constexpr quint16 flagTC = 0x0200;
constexpr quint16 flagRD = 0x0100;
constexpr quint16 flagRA = 0x0080;
constexpr quint16 flagCD = 0x0010;
constexpr quint32 ednsDO = 0x00008000;
constexpr int maxNameLength = 255;

quint16 u16(const uchar *d, qsizetype pos)
{
    return quint16((d[pos] << 8) | d[pos + 1]);
}

quint32 u32(const uchar *d, qsizetype pos)
{
    return (quint32(d[pos]) << 24) | (quint32(d[pos + 1]) << 16) | (quint32(d[pos + 2]) << 8) | d[pos + 3];
}

void put16(QByteArray &out, quint16 v)
{
    out.append(char(v >> 8));
    out.append(char(v & 0xff));
}

void put32(QByteArray &out, quint32 v)
{
    put16(out, quint16(v >> 16));
    put16(out, quint16(v & 0xffff));
}

// RFC 2181 section 8: a TTL with the top bit set is read as zero.
quint32 ttlValue(quint32 raw)
{
    return raw & 0x80000000u ? 0 : raw;
}

char lower(uchar c)
{
    return char(c >= 'A' && c <= 'Z' ? c + 32 : c);
}

// Reads the name at pos, following compression pointers. Each pointer must land before the previous
// one's target, so a hostile message cannot loop. Appends the lower-cased uncompressed form to out when
// given; returns the offset just after the name as written at pos, or -1 when malformed.
qsizetype readName(const uchar *d, qsizetype size, qsizetype pos, QByteArray *out)
{
    qsizetype end = -1;
    qsizetype limit = pos;
    int length = 0;
    for (;;) {
        if (pos >= size)
            return -1;
        const uchar len = d[pos];
        if ((len & 0xC0) == 0xC0) {
            if (pos + 1 >= size)
                return -1;
            const qsizetype target = ((len & 0x3F) << 8) | d[pos + 1];
            if (end < 0)
                end = pos + 2;
            if (target >= limit)
                return -1;
            limit = pos = target;
            continue;
        }
        if (len & 0xC0)
            return -1;
        if (pos + 1 + len > size)
            return -1;
        length += len + 1;
        if (length > maxNameLength)
            return -1;
        if (out) {
            out->append(char(len));
            for (int i = 0; i < len; ++i)
                out->append(lower(d[pos + 1 + i]));
        }
        pos += 1 + len;
        if (len == 0)
            return end < 0 ? pos : end;
    }
}

struct Record
{
    qsizetype nameStart = 0;
    quint16 type = 0;
    quint16 klass = 0;
    qsizetype ttlOffset = 0;
    qsizetype rdata = 0;
    quint16 rdlength = 0;
};

// Reads one resource record at pos; returns the offset after it, or -1.
qsizetype readRecord(const uchar *d, qsizetype size, qsizetype pos, Record &record)
{
    record.nameStart = pos;
    pos = readName(d, size, pos, nullptr);
    if (pos < 0 || pos + 10 > size)
        return -1;
    record.type = u16(d, pos);
    record.klass = u16(d, pos + 2);
    record.ttlOffset = pos + 4;
    record.rdlength = u16(d, pos + 8);
    record.rdata = pos + 10;
    if (record.rdata + record.rdlength > size)
        return -1;
    return record.rdata + record.rdlength;
}

QByteArray headerOnly(const uchar *d, quint16 extraFlags, RCode rcode)
{
    QByteArray out;
    out.reserve(headerSize);
    put16(out, u16(d, 0));
    // Keep the opcode and RD of the query, as resolvers do in a header-only error reply.
    const quint16 flags = u16(d, 2);
    put16(out, quint16(flagQR | (flags & (0x7800 | flagRD)) | extraFlags | quint16(rcode)));
    out.append(8, '\0');
    return out;
}

void appendQuestion(QByteArray &out, const Question &q)
{
    out.append(q.name);
    put16(out, q.type);
    put16(out, q.klass);
}

void appendOpt(QByteArray &out, bool dnssecOk)
{
    out.append('\0');
    put16(out, RRType::OPT);
    put16(out, maximumUdpSize);
    put32(out, dnssecOk ? ednsDO : 0);
    put16(out, 0);
}

QByteArray replyHeader(const Query &query, quint16 extraFlags, RCode rcode, quint16 answers)
{
    QByteArray out;
    out.reserve(headerSize + query.question.name.size() + 4 + 16 + 11);
    put16(out, query.id);
    put16(out,
        quint16(flagQR | flagRA | (query.recursionDesired ? flagRD : 0)
            | (query.checkingDisabled ? flagCD : 0) | extraFlags | quint16(rcode)));
    put16(out, 1);
    put16(out, answers);
    put16(out, 0);
    put16(out, query.hasEdns ? 1 : 0);
    appendQuestion(out, query.question);
    return out;
}

const uchar *bytes(QByteArrayView v)
{
    return reinterpret_cast<const uchar *>(v.data());
}

} // namespace

QByteArray nameToText(QByteArrayView wireName)
{
    QByteArray text;
    qsizetype pos = 0;
    while (pos < wireName.size()) {
        const int len = uchar(wireName[pos]);
        if (len == 0 || pos + 1 + len > wireName.size())
            break;
        if (!text.isEmpty())
            text.append('.');
        text.append(wireName.sliced(pos + 1, len));
        pos += 1 + len;
    }
    return text.isEmpty() ? QByteArray(".") : text;
}

std::optional<QByteArray> nameFromText(QByteArrayView text)
{
    if (text.endsWith('.'))
        text.chop(1);
    QByteArray wire;
    if (!text.isEmpty()) {
        for (QByteArrayView label : QByteArray::fromRawData(text.data(), text.size()).split('.')) {
            if (label.isEmpty() || label.size() > 63)
                return std::nullopt;
            wire.append(char(label.size()));
            for (char c : label)
                wire.append(lower(uchar(c)));
        }
    }
    wire.append('\0');
    if (wire.size() > maxNameLength)
        return std::nullopt;
    return wire;
}

QueryParse parseQuery(QByteArrayView message)
{
    QueryParse result;
    const uchar *d = bytes(message);
    const qsizetype size = message.size();
    if (size < headerSize)
        return result;
    const quint16 flags = u16(d, 2);
    if (flags & flagQR)
        return result; // a response: answering it could start a loop between two servers
    if ((flags >> 11) & 0xF) {
        result.reply = headerOnly(d, 0, RCode::NotImp);
        return result;
    }
    const quint16 qdcount = u16(d, 4);
    const quint16 ancount = u16(d, 6);
    const quint16 nscount = u16(d, 8);
    const quint16 arcount = u16(d, 10);
    Query query;
    query.id = u16(d, 0);
    query.recursionDesired = flags & flagRD;
    query.checkingDisabled = flags & flagCD;
    qsizetype pos = -1;
    if (qdcount == 1) {
        query.question.name.reserve(64);
        pos = readName(d, size, headerSize, &query.question.name);
    }
    if (pos < 0 || pos + 4 > size) {
        result.reply = headerOnly(d, 0, RCode::FormErr);
        return result;
    }
    query.question.type = u16(d, pos);
    query.question.klass = u16(d, pos + 2);
    pos += 4;
    const int records = ancount + nscount + arcount;
    for (int i = 0; i < records; ++i) {
        Record record;
        pos = readRecord(d, size, pos, record);
        if (pos < 0) {
            result.reply = headerOnly(d, 0, RCode::FormErr);
            return result;
        }
        if (record.type != RRType::OPT)
            continue;
        // One OPT, owned by the root, in the additional section (RFC 6891 section 6.1.1).
        if (query.hasEdns || i < ancount + nscount || d[record.nameStart] != 0) {
            result.reply = headerOnly(d, 0, RCode::FormErr);
            return result;
        }
        query.hasEdns = true;
        query.udpSize = std::max(record.klass, minimumUdpSize);
        query.dnssecOk = u32(d, record.ttlOffset) & ednsDO;
    }
    result.query = std::move(query);
    return result;
}

QByteArray makeReply(const Query &query, RCode rcode)
{
    QByteArray out = replyHeader(query, 0, rcode, 0);
    if (query.hasEdns)
        appendOpt(out, query.dnssecOk);
    return out;
}

QByteArray makeAddressReply(const Query &query, quint32 ipv4, quint32 ttl)
{
    QByteArray out = replyHeader(query, 0, RCode::NoError, 1);
    put16(out, 0xC000 | headerSize); // the question's name
    put16(out, RRType::A);
    put16(out, classIN);
    put32(out, ttl);
    put16(out, 4);
    put32(out, ipv4);
    if (query.hasEdns)
        appendOpt(out, query.dnssecOk);
    return out;
}

void setId(QByteArray &message, quint16 id)
{
    if (message.size() < headerSize)
        return;
    message[0] = char(id >> 8);
    message[1] = char(id & 0xff);
}

quint16 messageId(QByteArrayView message)
{
    return message.size() < 2 ? 0 : u16(bytes(message), 0);
}

std::optional<ResponseInfo> inspectResponse(QByteArrayView message)
{
    const uchar *d = bytes(message);
    const qsizetype size = message.size();
    if (size < headerSize || size > 0xffff)
        return std::nullopt;
    const quint16 flags = u16(d, 2);
    if (!(flags & flagQR) || u16(d, 4) != 1)
        return std::nullopt;
    ResponseInfo info;
    info.rcode = RCode(flags & 0xF);
    info.truncated = flags & flagTC;
    qsizetype pos = readName(d, size, headerSize, &info.question.name);
    if (pos < 0 || pos + 4 > size)
        return std::nullopt;
    info.question.type = u16(d, pos);
    info.question.klass = u16(d, pos + 2);
    pos += 4;

    const int ancount = u16(d, 6);
    const int authority = ancount + u16(d, 8);
    const int records = authority + u16(d, 10);
    std::optional<quint32> lowest;
    std::optional<quint32> negative;
    // A record takes at least 11 bytes: the counts alone must not decide the allocation.
    info.ttlOffsets.reserve(size_t(std::min<qsizetype>(records, (size - pos) / 11)));
    for (int i = 0; i < records; ++i) {
        Record record;
        pos = readRecord(d, size, pos, record);
        if (pos < 0)
            return std::nullopt;
        if (record.type == RRType::OPT)
            continue;
        info.ttlOffsets.push_back(quint16(record.ttlOffset));
        if (i >= authority)
            continue;
        const quint32 ttl = ttlValue(u32(d, record.ttlOffset));
        lowest = std::min(lowest.value_or(ttl), ttl);
        if (record.type == RRType::SOA && i >= ancount && record.rdlength >= 22) {
            const quint32 minimum = ttlValue(u32(d, record.rdata + record.rdlength - 4));
            negative = std::min({ ttl, minimum, negative.value_or(minimum) });
        }
    }
    if (info.truncated)
        return info;
    if (info.rcode == RCode::NoError && ancount > 0)
        info.cacheTtl = lowest;
    else if ((info.rcode == RCode::NoError || info.rcode == RCode::NXDomain) && negative)
        // RFC 2308: no SOA, no negative caching. A CNAME leading to the negative answer bounds it too.
        info.cacheTtl = std::min(*negative, *lowest);
    return info;
}

void ageTtls(QByteArray &message, const std::vector<quint16> &ttlOffsets, quint32 elapsedSeconds)
{
    uchar *d = reinterpret_cast<uchar *>(message.data());
    for (quint16 offset : ttlOffsets) {
        if (offset + 4 > message.size())
            continue;
        const quint32 ttl = u32(d, offset);
        const quint32 aged = ttl > elapsedSeconds ? ttl - elapsedSeconds : 0;
        d[offset] = uchar(aged >> 24);
        d[offset + 1] = uchar(aged >> 16);
        d[offset + 2] = uchar(aged >> 8);
        d[offset + 3] = uchar(aged);
    }
}

QByteArray truncateForUdp(QByteArrayView response, const Query &query, quint16 limit)
{
    if (response.size() <= limit || response.size() < headerSize)
        return response.toByteArray();
    const uchar *d = bytes(response);
    QByteArray out;
    put16(out, u16(d, 0));
    put16(out, quint16(u16(d, 2) | flagTC));
    put16(out, 1);
    put16(out, 0);
    put16(out, 0);
    put16(out, query.hasEdns ? 1 : 0);
    appendQuestion(out, query.question);
    if (query.hasEdns)
        appendOpt(out, query.dnssecOk);
    return out;
}

QByteArray makeQuery(quint16 id, QByteArrayView wireName, quint16 type)
{
    QByteArray out;
    out.reserve(headerSize + wireName.size() + 4);
    put16(out, id);
    put16(out, flagRD);
    put16(out, 1);
    out.append(6, '\0');
    out.append(wireName);
    put16(out, type);
    put16(out, classIN);
    return out;
}

std::optional<std::vector<ResourceRecord>> answerRecords(QByteArrayView response)
{
    const uchar *d = bytes(response);
    const qsizetype size = response.size();
    if (size < headerSize || !(u16(d, 2) & flagQR))
        return std::nullopt;
    qsizetype pos = headerSize;
    for (int i = u16(d, 4); i > 0; --i) {
        pos = readName(d, size, pos, nullptr);
        if (pos < 0 || pos + 4 > size)
            return std::nullopt;
        pos += 4;
    }
    std::vector<ResourceRecord> records;
    for (int i = u16(d, 6); i > 0; --i) {
        Record record;
        ResourceRecord rr;
        const qsizetype next = readRecord(d, size, pos, record);
        if (next < 0 || readName(d, size, pos, &rr.name) < 0)
            return std::nullopt;
        rr.type = record.type;
        rr.klass = record.klass;
        rr.ttl = u32(d, record.ttlOffset);
        rr.rdata = response.sliced(record.rdata, record.rdlength).toByteArray();
        records.push_back(std::move(rr));
        pos = next;
    }
    return records;
}

QByteArray frame(QByteArrayView message)
{
    QByteArray out;
    out.reserve(message.size() + 2);
    put16(out, quint16(message.size()));
    out.append(message);
    return out;
}

void TcpFrameReader::append(QByteArrayView bytes)
{
    if (m_start > 0 && m_start >= m_buffer.size() / 2) {
        m_buffer.remove(0, m_start);
        m_start = 0;
    }
    m_buffer.append(bytes);
}

std::optional<QByteArray> TcpFrameReader::next()
{
    if (buffered() < 2)
        return std::nullopt;
    const auto *d = reinterpret_cast<const uchar *>(m_buffer.constData()) + m_start;
    const qsizetype length = u16(d, 0);
    if (buffered() < 2 + length)
        return std::nullopt;
    QByteArray message = m_buffer.mid(m_start + 2, length);
    m_start += 2 + length;
    if (m_start == m_buffer.size()) {
        m_buffer.clear();
        m_start = 0;
    }
    return message;
}

} // namespace brivanta::dns
