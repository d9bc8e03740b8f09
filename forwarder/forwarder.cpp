#include "forwarder/forwarder.h"

#include "forwarder/canary.h"
#include "forwarder/doh_upstream.h"
#include "forwarder/health_state.h"

#include <algorithm>

namespace brivanta {

namespace {

// The canary is answered only while the upstream is known to work: a canary answer then proves the
// whole path, system resolver to filtering resolver.
constexpr qint64 canaryFreshnessMs = 30000;
// Clients waiting on the upstream, all together: beyond this a flood gets SERVFAIL, not our memory.
constexpr size_t maxWaiting = 20000;

bool isCanaryNonce(QByteArrayView nonce)
{
    return std::all_of(nonce.begin(), nonce.end(),
        [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-'; });
}

bool endsWith(const QByteArray &name, const QByteArray &suffix, qsizetype &prefixLength)
{
    if (!name.endsWith(suffix))
        return false;
    prefixLength = name.size() - suffix.size();
    return true;
}

} // namespace

Forwarder::Forwarder(DohUpstream &upstream, HealthState &health, QByteArray endpointHost, size_t cacheEntries,
    size_t cacheBytes, QObject *parent)
    : QObject(parent)
    , m_upstream(upstream)
    , m_health(health)
    , m_canaryWire(*dns::nameFromText(canarySuffix))
    , m_useApplicationDns(*dns::nameFromText("use-application-dns.net"))
    , m_cache(cacheEntries, cacheBytes)
{
    const auto host = dns::nameFromText(endpointHost);
    m_probeQuery = dns::makeQuery(0, host.value_or(QByteArray(1, '\0')), dns::RRType::A);
}

void Forwarder::send(const Waiter &waiter, QByteArray answer)
{
    if (waiter.udp && answer.size() > waiter.query.udpSize)
        answer = dns::truncateForUdp(answer, waiter.query, waiter.query.udpSize);
    waiter.respond(answer);
}

void Forwarder::handle(QByteArrayView message, bool udp, Respond respond)
{
    dns::QueryParse parsed = dns::parseQuery(message);
    if (!parsed.query) {
        if (parsed.reply)
            respond(*parsed.reply);
        return;
    }
    HealthState::Counters &counters = m_health.counters();
    ++counters.queries;
    Waiter waiter { std::move(*parsed.query), udp, std::move(respond) };
    const QByteArray &name = waiter.query.question.name;

    qsizetype prefix = 0;
    if (endsWith(name, m_canaryWire, prefix) && prefix > 0) {
        const int label = uchar(name[0]);
        if (label + 1 == prefix && isCanaryNonce(QByteArrayView(name).sliced(1, label))) {
            answerCanary(std::move(waiter), QByteArrayView(name).sliced(1, label));
        } else {
            send(waiter, dns::makeReply(waiter.query, dns::RCode::NXDomain));
        }
        return;
    }
    if (name == m_useApplicationDns) {
        // Browsers that see this name fail keep to the system resolver rather than their own DoH.
        send(waiter, dns::makeReply(waiter.query, dns::RCode::NXDomain));
        return;
    }

    dns::CacheKey key { name, waiter.query.question.type, waiter.query.question.klass,
        waiter.query.dnssecOk };
    if (auto cached = m_cache.lookup(key, waiter.query.id, dns::DnsCache::Clock::now())) {
        ++counters.cacheHits;
        send(waiter, std::move(*cached));
        return;
    }
    forward(std::move(waiter), std::move(key), message);
}

void Forwarder::forward(Waiter waiter, dns::CacheKey key, QByteArrayView message)
{
    if (m_waiting >= maxWaiting) {
        ++m_health.counters().servfails;
        send(waiter, dns::makeReply(waiter.query, dns::RCode::ServFail));
        return;
    }
    ++m_waiting;
    auto [slot, first] = m_inFlight.try_emplace(key);
    slot->second.push_back(std::move(waiter));
    if (!first)
        return;
    ++m_health.counters().upstreamQueries;
    QByteArray upstreamQuery = message.toByteArray();
    dns::setId(upstreamQuery, 0);
    m_upstream.query(
        std::move(upstreamQuery), [this, key](std::optional<QByteArray> answer, const QString &) {
            auto found = m_inFlight.find(key);
            if (found == m_inFlight.end())
                return;
            std::vector<Waiter> waiters = std::move(found->second);
            m_inFlight.erase(found);
            m_waiting -= waiters.size();
            std::optional<dns::ResponseInfo> info;
            if (answer)
                info = dns::inspectResponse(*answer);
            // An answer to another question is as good as none.
            if (!info || info->question.name != key.name || info->question.type != key.type
                || info->question.klass != key.klass) {
                m_health.counters().servfails += waiters.size();
                for (const Waiter &w : waiters)
                    send(w, dns::makeReply(w.query, dns::RCode::ServFail));
                return;
            }
            if (info->rcode != dns::RCode::ServFail)
                m_cache.insert(key, *answer, *info, dns::DnsCache::Clock::now());
            for (const Waiter &w : waiters) {
                QByteArray copy = *answer;
                dns::setId(copy, w.query.id);
                send(w, std::move(copy));
            }
        });
}

void Forwarder::answerCanary(Waiter waiter, QByteArrayView nonce)
{
    if (waiter.query.question.type != dns::RRType::A || waiter.query.question.klass != dns::classIN) {
        send(waiter, dns::makeReply(waiter.query, dns::RCode::NoError));
        return;
    }
    if (m_health.upstreamAnsweredWithin(canaryFreshnessMs)) {
        send(waiter, dns::makeAddressReply(waiter.query, canaryAddress(m_health.canarySecret(), nonce), 0));
        return;
    }
    if (m_canaryWaiters.size() >= maxWaiting) {
        send(waiter, dns::makeReply(waiter.query, dns::RCode::ServFail));
        return;
    }
    const bool probing = !m_canaryWaiters.empty();
    m_canaryWaiters.emplace_back(std::move(waiter), nonce.toByteArray());
    if (!probing)
        probeUpstream();
}

void Forwarder::probeUpstream()
{
    ++m_health.counters().upstreamQueries;
    m_upstream.query(m_probeQuery, [this](std::optional<QByteArray> answer, const QString &) {
        const bool ok = answer && dns::inspectResponse(*answer).has_value();
        auto waiters = std::move(m_canaryWaiters);
        m_canaryWaiters.clear();
        for (auto &[waiter, nonce] : waiters) {
            send(waiter,
                ok ? dns::makeAddressReply(waiter.query, canaryAddress(m_health.canarySecret(), nonce), 0)
                   : dns::makeReply(waiter.query, dns::RCode::ServFail));
        }
    });
}

} // namespace brivanta
