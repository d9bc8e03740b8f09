#pragma once

#include "model/doh_configuration.h"
#include "model/dot_configuration.h"
#include "model/hasher.h"

#include <QString>
#include <QStringView>
#include <functional>
#include <optional>
#include <variant>

namespace brivanta {

// The protocol of a resolver profile with its settings: exactly one of two alternatives.
class Configuration
{
public:
    // Names the alternative without its payload (the JSON form's "base").
    class Base
    {
    public:
        enum Value { dnsOverTLS, dnsOverHTTPS };

        constexpr Base(Value value)
            : m_value(value)
        { }
        // No value for any text other than the two raw values.
        static std::optional<Base> fromRawValue(QStringView rawValue);

        QString rawValue() const;
        constexpr operator Value() const { return m_value; }

    private:
        Value m_value;
    };

    // The keys of the JSON form.
    class CodingKeys
    {
    public:
        enum Value { base, dotConfiguration, dohConfiguration };

        constexpr CodingKeys(Value value)
            : m_value(value)
        { }
        // No key for any text other than the three raw values.
        static std::optional<CodingKeys> fromRawValue(QStringView rawValue);

        QString rawValue() const;
        constexpr operator Value() const { return m_value; }

    private:
        Value m_value;
    };

    static Configuration dnsOverTLS(DoTConfiguration configuration);
    static Configuration dnsOverHTTPS(DoHConfiguration configuration);

    Base base() const;
    // The payload of the alternative, or null when the value is the other alternative.
    const DoTConfiguration *dotConfiguration() const { return std::get_if<DoTConfiguration>(&m_payload); }
    const DoHConfiguration *dohConfiguration() const { return std::get_if<DoHConfiguration>(&m_payload); }

    // "DNS-over-TLS" or "DNS-over-HTTPS".
    QString description() const;

    // Discriminator (0 for TLS, 1 for HTTPS) followed by the payload's fields.
    void hash(Hasher &hasher) const;
    friend bool operator==(const Configuration &a, const Configuration &b) = default;

private:
    explicit Configuration(std::variant<DoTConfiguration, DoHConfiguration> payload);

    // The variant's index is the discriminator: keep the TLS alternative first.
    std::variant<DoTConfiguration, DoHConfiguration> m_payload;
};

} // namespace brivanta

template <> struct std::hash<brivanta::Configuration>
{
    size_t operator()(const brivanta::Configuration &value) const { return brivanta::qHash(value); }
};
