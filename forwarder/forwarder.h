#pragma once

#include "forwarder/dns_cache.h"
#include "forwarder/dns_message.h"

#include <QObject>
#include <functional>
#include <unordered_map>
#include <vector>

namespace brivanta {

class DohUpstream;
class HealthState;

// Answers one client message at a time: the canary and use-application-dns.net here, then the cache,
// then the upstream with message ID 0, the client's ID restored on the way back. Identical questions
// in flight share one upstream query. Anything wrong upstream is SERVFAIL: never another resolver.
// Main thread only.
class Forwarder : public QObject
{
    Q_OBJECT

public:
    // Called once with the bytes to send back, possibly before handle() returns; never for a message
    // that is dropped.
    using Respond = std::function<void(const QByteArray &answer)>;

    Forwarder(DohUpstream &upstream, HealthState &health, QByteArray endpointHost, size_t cacheEntries,
        size_t cacheBytes, QObject *parent = nullptr);

    // udp: the answer is cut to the client's advertised size, with TC set when it does not fit.
    void handle(QByteArrayView message, bool udp, Respond respond);
    void clearCache() { m_cache.clear(); }

private:
    struct Waiter
    {
        dns::Query query;
        bool udp = false;
        Respond respond;
    };
    void send(const Waiter &waiter, QByteArray answer);
    void answerCanary(Waiter waiter, QByteArrayView nonce);
    void forward(Waiter waiter, dns::CacheKey key, QByteArrayView message);
    void probeUpstream();

    DohUpstream &m_upstream;
    HealthState &m_health;
    QByteArray m_probeQuery;
    QByteArray m_canaryWire;
    QByteArray m_useApplicationDns;
    dns::DnsCache m_cache;
    std::unordered_map<dns::CacheKey, std::vector<Waiter>, dns::CacheKeyHash> m_inFlight;
    size_t m_waiting = 0;
    std::vector<std::pair<Waiter, QByteArray>> m_canaryWaiters;
};

} // namespace brivanta
