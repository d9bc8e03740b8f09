#include "model/configuration.h"

#include <utility>

namespace brivanta {

std::optional<Configuration::Base> Configuration::Base::fromRawValue(QStringView rawValue)
{
    if (rawValue == u"dnsOverTLS")
        return Base(dnsOverTLS);
    if (rawValue == u"dnsOverHTTPS")
        return Base(dnsOverHTTPS);
    return std::nullopt;
}

QString Configuration::Base::rawValue() const
{
    return m_value == dnsOverTLS ? QStringLiteral("dnsOverTLS") : QStringLiteral("dnsOverHTTPS");
}

std::optional<Configuration::CodingKeys> Configuration::CodingKeys::fromRawValue(QStringView rawValue)
{
    if (rawValue == u"base")
        return CodingKeys(base);
    if (rawValue == u"dotConfiguration")
        return CodingKeys(dotConfiguration);
    if (rawValue == u"dohConfiguration")
        return CodingKeys(dohConfiguration);
    return std::nullopt;
}

QString Configuration::CodingKeys::rawValue() const
{
    switch (m_value) {
    case base:
        return QStringLiteral("base");
    case dotConfiguration:
        return QStringLiteral("dotConfiguration");
    case dohConfiguration:
        return QStringLiteral("dohConfiguration");
    }
    Q_UNREACHABLE();
}

Configuration::Configuration(std::variant<DoTConfiguration, DoHConfiguration> payload)
    : m_payload(std::move(payload))
{ }

Configuration Configuration::dnsOverTLS(DoTConfiguration configuration)
{
    return Configuration(std::move(configuration));
}

Configuration Configuration::dnsOverHTTPS(DoHConfiguration configuration)
{
    return Configuration(std::move(configuration));
}

Configuration::Base Configuration::base() const
{
    return m_payload.index() == 0 ? Base::dnsOverTLS : Base::dnsOverHTTPS;
}

QString Configuration::description() const
{
    return base() == Base::dnsOverTLS ? QStringLiteral("DNS-over-TLS") : QStringLiteral("DNS-over-HTTPS");
}

void Configuration::hash(Hasher &hasher) const
{
    hasher.combine(static_cast<quint64>(m_payload.index()));
    std::visit([&hasher](const auto &payload) { payload.hash(hasher); }, m_payload);
}

} // namespace brivanta
