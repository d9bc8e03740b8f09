#include "forwarder/forwarder_config.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace brivanta;

namespace {

// A configuration file with the given text, read into a fresh config; the error if any.
std::optional<QString> readConfig(ForwarderConfig &config, const QString &path, const QByteArray &text)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(text) == text.size());
    file.close();
    return config.readFile(path);
}

} // namespace

TEST(ForwarderConfig, EndpointRuleAcceptsOnlyHttpsHostPortPath)
{
    const struct
    {
        const char *endpoint;
        bool valid;
    } cases[] = { { "https://dns.example", true }, { "https://dns.example:8443/a/b%20c", true },
        { "https://192.0.2.1/dns-query", true }, { "https://[2001:db8::1]:443/q", true },
        { "http://dns.example/dns-query", false }, { "HTTPS://dns.example/", false },
        { "https://dns.example/dns-query?dns=x", false }, { "https://dns.example/#frag", false },
        { "https://user@dns.example/", false }, { "https://dns.example:/", false },
        { "https://dns.example:0/", false }, { "https:///path", false }, { "https://dns example/", false },
        { "https://dns.example/a b", false }, { "https://-bad.example/", false }, { "", false } };
    for (const auto &c : cases)
        EXPECT_EQ(!validateEndpoint(QString::fromUtf8(c.endpoint)).has_value(), c.valid) << c.endpoint;
}

TEST(ForwarderConfig, FileValues)
{
    QTemporaryDir dir;
    ForwarderConfig config;
    ASSERT_EQ(readConfig(config, dir.filePath(QStringLiteral("dohd.conf")),
                  "# helper\n\nendpoint = https://Dns.Example/dns-query\nlisten = [::1]:5353\n"
                  "bootstrap = 192.0.2.53 192.0.2.54:5300\nresolve = dns.example:443:192.0.2.1\n"
                  "cache-entries = 5\n"),
        std::nullopt);
    EXPECT_EQ(config.check(), std::nullopt);
    EXPECT_EQ(config.endpointText, QStringLiteral("https://Dns.Example/dns-query"));
    EXPECT_EQ(config.listen, (HostPort { QHostAddress(QStringLiteral("::1")), 5353 }));
    EXPECT_EQ(config.bootstrap,
        (std::vector<HostPort> { { QHostAddress(QStringLiteral("192.0.2.53")), 53 },
            { QHostAddress(QStringLiteral("192.0.2.54")), 5300 } }));
    EXPECT_EQ(config.pins, QStringList { QStringLiteral("dns.example:443:192.0.2.1") });
    EXPECT_EQ(config.cacheEntries, 5u);
}

TEST(ForwarderConfig, BadLinesNameFileLineAndProblem)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("dohd.conf"));
    const struct
    {
        const char *line;
        const char *problem;
    } cases[] = {
        { "colour = blue", "unknown setting \"colour\"" },
        { "just words", "expected key = value" },
        { "listen = 127.0.0.153:5x", "listen must be an address and port, such as 127.0.0.153:53" },
        { "endpoint = https://dns.example/dns-query?dns=AAAB",
            "the endpoint must be https://host[:port][/path], without user, query or fragment" },
        { "listen = localhost:53", "listen must be an address and port, such as 127.0.0.153:53" },
        { "bootstrap = 192.0.2.1 dns.example",
            "bootstrap must be a list of IP addresses, each with an optional :port" },
        { "cache-bytes = lots", "cache-bytes must be a whole number" },
        { "resolve = dns.example:443", "resolve must be host:port:address" },
    };
    for (const auto &c : cases) {
        ForwarderConfig config;
        EXPECT_EQ(readConfig(config, path, QByteArray("endpoint = https://dns.example/\n") + c.line),
            path + QStringLiteral(":2: ") + QString::fromUtf8(c.problem));
    }
    EXPECT_TRUE(ForwarderConfig().check().has_value()) << "an endpoint is required";
}
