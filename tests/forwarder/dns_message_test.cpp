#include "forwarder/dns_message.h"

#include <gtest/gtest.h>

using namespace brivanta::dns;

namespace {

// Wire pieces, built by hand so that the parser is not checked against itself.
const auto u16 = [](quint16 v) { return QByteArray(1, char(v >> 8)) + char(v & 0xff); };
const auto u32 = [](quint32 v) { return u16(quint16(v >> 16)) + u16(quint16(v)); };
const auto header = [](quint16 id, quint16 flags, quint16 qd, quint16 an, quint16 ns, quint16 ar) {
    return u16(id) + u16(flags) + u16(qd) + u16(an) + u16(ns) + u16(ar);
};
const auto name = [](const char *text) { return nameFromText(text).value(); };
const auto question = [](const char *text) { return name(text) + u16(RRType::A) + u16(classIN); };
const auto record = [](const QByteArray &owner, quint16 type, quint32 ttl, const QByteArray &rdata) {
    return owner + u16(type) + u16(classIN) + u32(ttl) + u16(quint16(rdata.size())) + rdata;
};
const auto opt = [](quint16 size, quint32 flags = 0, const QByteArray &owner = QByteArray(1, '\0')) {
    return owner + u16(RRType::OPT) + u16(size) + u32(flags) + u16(0);
};
const QByteArray pointerToQuestion("\xc0\x0c", 2);

} // namespace

TEST(DnsMessage, NamesConvertBetweenTextAndWire)
{
    const struct
    {
        const char *text;
        std::optional<QByteArray> wire;
    } cases[] = { { "Example.COM", QByteArray("\007example\003com", 13) },
        { "example.com.", QByteArray("\007example\003com", 13) }, { ".", QByteArray(1, '\0') },
        { "", QByteArray(1, '\0') }, { "a..b", std::nullopt }, { ".a", std::nullopt },
        { "example.com..", std::nullopt },
        { "a.xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx", std::nullopt } }; // 64
    for (const auto &c : cases)
        EXPECT_EQ(nameFromText(c.text), c.wire) << c.text;

    const QByteArray longest = (QByteArray(63, 'a') + '.').repeated(3); // and 61 more: 255 bytes on the wire
    EXPECT_EQ(nameFromText(longest + QByteArray(61, 'b'))->size(), 255);
    EXPECT_EQ(nameFromText(longest + QByteArray(62, 'b')), std::nullopt);

    EXPECT_EQ(nameToText(QByteArray("\003www\007example\003com", 17)), "www.example.com");
    EXPECT_EQ(nameToText(QByteArray(1, '\0')), ".");
}

TEST(DnsMessage, ParseAcceptsAnswersFormErrOrDrops)
{
    // Error replies: ID kept, QR set, the query's opcode and our rcode; no records.
    enum Outcome { Parsed = -1, Dropped = 0, FormErr = 0x8001, NotImp = 0xa004 };
    const QByteArray h = header(1, 0, 1, 0, 0, 0), q = question("a.test");
    const struct
    {
        const char *what;
        QByteArray message;
        Outcome outcome;
    } cases[] = {
        { "trailing bytes ignored", h + q + "xx", Parsed },
        { "shorter than a header", h.left(11), Dropped },
        { "empty", QByteArray(), Dropped },
        { "a response", header(1, 0x8000, 1, 0, 0, 0) + q, Dropped },
        { "opcode NOTIFY", header(1, 0x2000, 1, 0, 0, 0) + q, NotImp },
        { "no question", header(1, 0, 0, 0, 0, 0), FormErr },
        { "two questions", header(1, 0, 2, 0, 0, 0) + q + q, FormErr },
        { "name past the end", h + "\005ab", FormErr },
        { "no class", h + name("a.test") + u16(RRType::A), FormErr },
        { "reserved label type", h + "\x41" + QByteArray(70, 'a'), FormErr },
        { "pointer to itself", h + pointerToQuestion + u32(0x00010001), FormErr },
        { "name over 255 bytes", h + (char(63) + QByteArray(63, 'a')).repeated(4) + '\0' + u32(0x10001),
            FormErr },
        { "missing additional record", header(1, 0, 1, 0, 0, 1) + q, FormErr },
        { "record data past the end", header(1, 0, 1, 0, 0, 1) + q + opt(4096).chopped(2) + u16(8), FormErr },
        { "OPT in the answer section", header(1, 0, 1, 1, 0, 0) + q + opt(4096), FormErr },
        { "two OPTs", header(1, 0, 1, 0, 0, 2) + q + opt(4096) + opt(4096), FormErr },
        { "OPT not owned by the root", header(1, 0, 1, 0, 0, 1) + q + opt(4096, 0, name("a")), FormErr },
    };
    for (const auto &c : cases) {
        const QueryParse parsed = parseQuery(c.message);
        EXPECT_EQ(parsed.query.has_value(), c.outcome == Parsed) << c.what;
        EXPECT_EQ(
            parsed.reply, c.outcome > 0 ? std::optional(header(1, c.outcome, 0, 0, 0, 0)) : std::nullopt)
            << c.what;
    }
}

TEST(DnsMessage, CacheTtlFollowsRecordsAndRfc2308)
{
    const QByteArray q = question("n.test");
    const QByteArray a = record(pointerToQuestion, RRType::A, 300, "\1\2\3\4");
    const QByteArray cname = record(pointerToQuestion, RRType::CNAME, 20, pointerToQuestion);
    const QByteArray ns = record(name("test"), RRType::NS, 100, name("ns.test"));
    const auto soaRecord = [](quint32 ttl, quint32 minimum) {
        return record(name("test"), RRType::SOA, ttl,
            name("ns.test") + name("host.test") + u32(1).repeated(4) + u32(minimum));
    };
    const struct
    {
        const char *what;
        QByteArray message;
        std::optional<quint32> ttl;
    } cases[] = {
        { "lowest of answer and authority", header(1, 0x8180, 1, 1, 1, 0) + q + a + ns, 100 },
        { "additional and OPT ignored",
            header(1, 0x8180, 1, 1, 0, 2) + q + a + record(name("x"), 1, 5, "1234") + opt(1232, 0x8000),
            300 },
        { "NXDOMAIN: SOA minimum", header(1, 0x8183, 1, 0, 1, 0) + q + soaRecord(3600, 300), 300 },
        { "NXDOMAIN: SOA TTL", header(1, 0x8183, 1, 0, 1, 0) + q + soaRecord(60, 300), 60 },
        { "NODATA: SOA", header(1, 0x8180, 1, 0, 1, 0) + q + soaRecord(900, 600), 600 },
        { "NXDOMAIN after a CNAME", header(1, 0x8183, 1, 1, 1, 0) + q + cname + soaRecord(900, 600), 20 },
        { "NXDOMAIN without SOA", header(1, 0x8183, 1, 0, 1, 0) + q + ns, std::nullopt },
        { "NODATA without SOA", header(1, 0x8180, 1, 0, 0, 0) + q, std::nullopt },
        { "SERVFAIL", header(1, 0x8182, 1, 1, 0, 0) + q + a, std::nullopt },
        { "REFUSED", header(1, 0x8185, 1, 0, 1, 0) + q + soaRecord(60, 60), std::nullopt },
        { "truncated", header(1, 0x8380, 1, 1, 0, 0) + q + a, std::nullopt },
        { "TTL with the top bit set",
            header(1, 0x8180, 1, 1, 0, 0) + q + record(pointerToQuestion, 1, 0x80000001, "1234"), 0 },
    };
    for (const auto &c : cases) {
        const auto info = inspectResponse(c.message);
        ASSERT_TRUE(info) << c.what;
        EXPECT_EQ(info->cacheTtl, c.ttl) << c.what;
        EXPECT_EQ(info->question, (Question { name("n.test"), RRType::A, classIN })) << c.what;
    }
    EXPECT_FALSE(inspectResponse(header(1, 0x0100, 1, 1, 0, 0) + q + a)) << "a query";
    EXPECT_FALSE(inspectResponse(header(1, 0x8180, 0, 0, 0, 0))) << "no question";
}
