// How the JSON form works. Encoding builds an nlohmann::ordered_json, so keys come out in field order
// (QJsonObject would sort them) and 64-bit integers stay exact; decoding parses a plain nlohmann::json and
// finds keys by name. There is one encode() and one decode() overload per record; decode() takes a Tag<T>
// because a return type alone cannot pick an overload. A fault at any depth throws a file-local
// EncodingFailure or DecodingFailure, which the two public entry points catch and turn into "no value", so
// a half-built record never escapes. Nesting is measured in one pass before parsing, so no input can drive
// the parser's recursion deep.
//
// The Linux backends read and write their own small state files with QJsonDocument, where key order and
// integer width do not matter; the model's records go through here only.

#include "model/json_form.h"

#include "model/configuration.h"
#include "model/doh_configuration.h"
#include "model/dot_configuration.h"
#include "model/ne_on_demand_rule_action.h"
#include "model/ne_on_demand_rule_interface_type.h"
#include "model/on_demand_rule.h"
#include "model/resolver.h"

#include <QLatin1StringView>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QUuid>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace brivanta {

namespace {

using Json = nlohmann::json;
using OrderedJson = nlohmann::ordered_json;

// Both only ever travel inside this file: the public functions turn them into "no value".
struct EncodingFailure
{
};
struct DecodingFailure
{
};

template <typename T> struct Tag
{
};

// Encoding ------------------------------------------------------------------------------------------

std::string encodeString(const QString &value)
{
    // A lone surrogate has no UTF-8 form; Qt would silently substitute a replacement character.
    if (!value.isValidUtf16())
        throw EncodingFailure {};
    return value.toStdString();
}

OrderedJson encode(const QStringList &values)
{
    OrderedJson array = OrderedJson::array();
    for (const QString &value : values)
        array.push_back(encodeString(value));
    return array;
}

std::string encodeURL(const QUrl &url)
{
    if (!url.isValid())
        throw EncodingFailure {};
    return url.toEncoded().toStdString();
}

std::string encodeUUID(const QUuid &id)
{
    return id.toString(QUuid::WithoutBraces).toUpper().toStdString();
}

OrderedJson encode(NEOnDemandRuleAction action)
{
    return action.rawValue;
}

OrderedJson encode(NEOnDemandRuleInterfaceType interfaceType)
{
    return interfaceType.rawValue;
}

OrderedJson encode(const DoTConfiguration &configuration)
{
    OrderedJson object = OrderedJson::object();
    object["servers"] = encode(configuration.servers);
    if (configuration.serverName)
        object["serverName"] = encodeString(*configuration.serverName);
    return object;
}

OrderedJson encode(const DoHConfiguration &configuration)
{
    OrderedJson object = OrderedJson::object();
    object["servers"] = encode(configuration.servers);
    if (configuration.serverURL)
        object["serverURL"] = encodeURL(*configuration.serverURL);
    return object;
}

OrderedJson encode(const Configuration &configuration)
{
    OrderedJson object = OrderedJson::object();
    object["base"] = configuration.base().rawValue().toStdString();
    if (const DoTConfiguration *dot = configuration.dotConfiguration())
        object["dotConfiguration"] = encode(*dot);
    if (const DoHConfiguration *doh = configuration.dohConfiguration())
        object["dohConfiguration"] = encode(*doh);
    return object;
}

OrderedJson encode(const OnDemandRule &rule)
{
    OrderedJson object = OrderedJson::object();
    object["id"] = encodeUUID(rule.id);
    object["name"] = encodeString(rule.name);
    object["action"] = encode(rule.action);
    object["interfaceType"] = encode(rule.interfaceType);
    object["ssidMatch"] = encode(rule.ssidMatch);
    object["dnsSearchDomainMatch"] = encode(rule.dnsSearchDomainMatch);
    object["dnsServerAddressMatch"] = encode(rule.dnsServerAddressMatch);
    if (rule.probeURL)
        object["probeURL"] = encodeURL(*rule.probeURL);
    return object;
}

OrderedJson encode(const Resolver &resolver)
{
    OrderedJson object = OrderedJson::object();
    object["id"] = encodeUUID(resolver.id);
    object["name"] = encodeString(resolver.name);
    object["configuration"] = encode(resolver.configuration);
    OrderedJson rules = OrderedJson::array();
    for (const OnDemandRule &rule : resolver.onDemandRules)
        rules.push_back(encode(rule));
    object["onDemandRules"] = std::move(rules);
    return object;
}

OrderedJson encode(const std::vector<Resolver> &resolvers)
{
    OrderedJson array = OrderedJson::array();
    for (const Resolver &resolver : resolvers)
        array.push_back(encode(resolver));
    return array;
}

// Decoding ------------------------------------------------------------------------------------------

const Json &requireObject(const Json &value)
{
    if (!value.is_object())
        throw DecodingFailure {};
    return value;
}

QString decode(const Json &value, Tag<QString>)
{
    if (!value.is_string())
        throw DecodingFailure {};
    const std::string &text = value.get_ref<const std::string &>();
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QStringList decode(const Json &value, Tag<QStringList>)
{
    if (!value.is_array())
        throw DecodingFailure {};
    QStringList strings;
    strings.reserve(static_cast<qsizetype>(value.size()));
    for (const Json &element : value)
        strings.append(decode(element, Tag<QString> {}));
    return strings;
}

bool isUUIDText(const std::string &text)
{
    if (text.size() != 36)
        return false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (i == 8 || i == 13 || i == 18 || i == 23) {
            if (c != '-')
                return false;
        } else if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'))) {
            return false;
        }
    }
    return true;
}

QUuid decode(const Json &value, Tag<QUuid>)
{
    // Only the bare 8-4-4-4-12 form: QUuid alone would also take braces and other spellings.
    if (!value.is_string() || !isUUIDText(value.get_ref<const std::string &>()))
        throw DecodingFailure {};
    return QUuid::fromString(QLatin1StringView(value.get_ref<const std::string &>().c_str()));
}

QUrl decode(const Json &value, Tag<QUrl>)
{
    // Strict parsing refuses what a URL may not hold (spaces, control characters, stray "%"), and an
    // empty text is no URL at all.
    const QUrl url(decode(value, Tag<QString> {}), QUrl::StrictMode);
    if (!url.isValid())
        throw DecodingFailure {};
    return url;
}

qint64 decodeInteger(const Json &value)
{
    // Only numbers written as integers; a fraction, an exponent or anything beyond 64 bits fails.
    if (value.is_number_unsigned()) {
        const auto number = value.get<std::uint64_t>();
        if (number > static_cast<std::uint64_t>(std::numeric_limits<qint64>::max()))
            throw DecodingFailure {};
        return static_cast<qint64>(number);
    }
    if (value.is_number_integer())
        return value.get<std::int64_t>();
    throw DecodingFailure {};
}

NEOnDemandRuleAction decode(const Json &value, Tag<NEOnDemandRuleAction>)
{
    return NEOnDemandRuleAction(decodeInteger(value));
}

NEOnDemandRuleInterfaceType decode(const Json &value, Tag<NEOnDemandRuleInterfaceType>)
{
    return NEOnDemandRuleInterfaceType(decodeInteger(value));
}

template <typename T> T field(const Json &object, const char *key)
{
    const auto it = object.find(key);
    if (it == object.end())
        throw DecodingFailure {};
    return decode(*it, Tag<T> {});
}

template <typename T> std::optional<T> optionalField(const Json &object, const char *key)
{
    const auto it = object.find(key);
    if (it == object.end() || it->is_null())
        return std::nullopt;
    return decode(*it, Tag<T> {});
}

DoTConfiguration decode(const Json &value, Tag<DoTConfiguration>)
{
    const Json &object = requireObject(value);
    QStringList servers = field<QStringList>(object, "servers");
    return DoTConfiguration(std::move(servers), optionalField<QString>(object, "serverName"));
}

DoHConfiguration decode(const Json &value, Tag<DoHConfiguration>)
{
    const Json &object = requireObject(value);
    QStringList servers = field<QStringList>(object, "servers");
    return DoHConfiguration(std::move(servers), optionalField<QUrl>(object, "serverURL"));
}

Configuration decode(const Json &value, Tag<Configuration>)
{
    const Json &object = requireObject(value);
    const std::optional<Configuration::Base> base
        = Configuration::Base::fromRawValue(field<QString>(object, "base"));
    if (!base)
        throw DecodingFailure {};
    // Only the payload that base selects is read; the other key may hold anything.
    if (*base == Configuration::Base::dnsOverTLS)
        return Configuration::dnsOverTLS(field<DoTConfiguration>(object, "dotConfiguration"));
    return Configuration::dnsOverHTTPS(field<DoHConfiguration>(object, "dohConfiguration"));
}

OnDemandRule decode(const Json &value, Tag<OnDemandRule>)
{
    // Every key but probeURL is required, also those the constructor would default.
    const Json &object = requireObject(value);
    QUuid id = field<QUuid>(object, "id");
    QString name = field<QString>(object, "name");
    const auto action = field<NEOnDemandRuleAction>(object, "action");
    const auto interfaceType = field<NEOnDemandRuleInterfaceType>(object, "interfaceType");
    QStringList ssidMatch = field<QStringList>(object, "ssidMatch");
    QStringList dnsSearchDomainMatch = field<QStringList>(object, "dnsSearchDomainMatch");
    QStringList dnsServerAddressMatch = field<QStringList>(object, "dnsServerAddressMatch");
    std::optional<QUrl> probeURL = optionalField<QUrl>(object, "probeURL");
    return OnDemandRule(id, std::move(name), action, interfaceType, std::move(ssidMatch),
        std::move(dnsSearchDomainMatch), std::move(dnsServerAddressMatch), std::move(probeURL));
}

std::vector<OnDemandRule> decode(const Json &value, Tag<std::vector<OnDemandRule>>)
{
    if (!value.is_array())
        throw DecodingFailure {};
    std::vector<OnDemandRule> rules;
    rules.reserve(value.size());
    for (const Json &element : value)
        rules.push_back(decode(element, Tag<OnDemandRule> {}));
    return rules;
}

Resolver decode(const Json &value, Tag<Resolver>)
{
    const Json &object = requireObject(value);
    QUuid id = field<QUuid>(object, "id");
    QString name = field<QString>(object, "name");
    Configuration configuration = field<Configuration>(object, "configuration");
    // The one non-optional field that may be missing (or null): no rules.
    std::vector<OnDemandRule> rules = optionalField<std::vector<OnDemandRule>>(object, "onDemandRules")
                                          .value_or(std::vector<OnDemandRule> {});
    return Resolver(id, std::move(name), std::move(configuration), std::move(rules));
}

std::vector<Resolver> decode(const Json &value, Tag<std::vector<Resolver>>)
{
    if (!value.is_array())
        throw DecodingFailure {};
    std::vector<Resolver> resolvers;
    resolvers.reserve(value.size());
    for (const Json &element : value)
        resolvers.push_back(decode(element, Tag<Resolver> {}));
    return resolvers;
}

// Whether no array or object in the text nests deeper than the limit. Runs before parsing so that no
// input, however deep, costs more than this one linear pass.
bool nestingWithin(QByteArrayView text, int limit)
{
    int depth = 0;
    bool inString = false;
    bool escaped = false;
    for (const char c : text) {
        if (inString) {
            if (escaped)
                escaped = false;
            else if (c == '\\')
                escaped = true;
            else if (c == '"')
                inString = false;
            continue;
        }
        switch (c) {
        case '"':
            inString = true;
            break;
        case '[':
        case '{':
            if (++depth > limit)
                return false;
            break;
        case ']':
        case '}':
            --depth;
            break;
        default:
            break;
        }
    }
    return true;
}

} // namespace

template <typename T> QByteArray encodeJSON(const T &value)
{
    try {
        return QByteArray::fromStdString(encode(value).dump());
    } catch (const EncodingFailure &) {
        return {};
    } catch (const nlohmann::json::exception &) {
        return {};
    }
}

template <typename T> std::optional<T> decodeJSON(QByteArrayView utf8)
{
    if (!nestingWithin(utf8, maxJSONDepth))
        return std::nullopt;
    try {
        // The parser checks the UTF-8 of every string, lone surrogate escapes included.
        const Json document = Json::parse(utf8.begin(), utf8.end(), nullptr, /*allow_exceptions=*/false);
        if (document.is_discarded())
            return std::nullopt;
        return decode(document, Tag<T> {});
    } catch (const DecodingFailure &) {
        return std::nullopt;
    } catch (const nlohmann::json::exception &) {
        return std::nullopt;
    }
}

template QByteArray encodeJSON(const Resolver &);
template QByteArray encodeJSON(const Configuration &);
template QByteArray encodeJSON(const DoHConfiguration &);
template QByteArray encodeJSON(const DoTConfiguration &);
template QByteArray encodeJSON(const OnDemandRule &);
template QByteArray encodeJSON(const NEOnDemandRuleAction &);
template QByteArray encodeJSON(const NEOnDemandRuleInterfaceType &);
template QByteArray encodeJSON(const std::vector<Resolver> &);

template std::optional<Resolver> decodeJSON<Resolver>(QByteArrayView);
template std::optional<Configuration> decodeJSON<Configuration>(QByteArrayView);
template std::optional<DoHConfiguration> decodeJSON<DoHConfiguration>(QByteArrayView);
template std::optional<DoTConfiguration> decodeJSON<DoTConfiguration>(QByteArrayView);
template std::optional<OnDemandRule> decodeJSON<OnDemandRule>(QByteArrayView);
template std::optional<NEOnDemandRuleAction> decodeJSON<NEOnDemandRuleAction>(QByteArrayView);
template std::optional<NEOnDemandRuleInterfaceType> decodeJSON<NEOnDemandRuleInterfaceType>(QByteArrayView);
template std::optional<std::vector<Resolver>> decodeJSON<std::vector<Resolver>>(QByteArrayView);

} // namespace brivanta
