#include "forwarder/canary.h"
#include "forwarder/forwarder_config.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace brivanta;

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
    const QString path = dir.filePath(QStringLiteral("dohd.conf"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("# written by the helper\n\n"
               "endpoint = https://Dns.Example/dns-query\n"
               "listen = [::1]:5353\n"
               "bootstrap = 192.0.2.53 192.0.2.54:5300\n"
               "resolve = dns.example:443:192.0.2.1\n"
               "cache-entries = 5\n");
    file.close();

    ForwarderConfig config;
    ASSERT_EQ(config.readFile(path), std::nullopt);
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
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("endpoint = https://dns.example/\n");
        file.write(c.line);
        file.close();
        ForwarderConfig config;
        EXPECT_EQ(config.readFile(path), path + QStringLiteral(":2: ") + QString::fromUtf8(c.problem));
    }
    EXPECT_TRUE(ForwarderConfig().check().has_value()) << "an endpoint is required";
}

TEST(ForwarderConfig, CanaryAddressIsLoopbackFromTheHash)
{
    // SHA-256("secret" "abc") starts f6 ba 18 (python3 hashlib).
    EXPECT_EQ(canaryAddress("secret", "abc"), 0x7ff6ba18u);
}
