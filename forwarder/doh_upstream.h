#pragma once

#include "forwarder/bootstrap_resolver.h"

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

using CURL = void;
using CURLM = void;

namespace brivanta {

struct UpstreamSettings
{
    QUrl endpoint; // https://host[:port][/path], checked by the caller
    std::vector<HostPort> bootstrap; // plain-DNS servers, only for the endpoint's host name
    QStringList pins; // "host:port:address": the address given, no bootstrap
    QString caFile; // trusted instead of the system store (tests)
    std::chrono::milliseconds attemptTimeout { 2000 };
};

// DNS-over-HTTPS (RFC 8484) to one endpoint: POSTs of application/dns-message over one kept-alive,
// multiplexed HTTP/2 connection with TCP_NODELAY, through libcurl's multi interface driven by the Qt
// event loop (socket notifiers and one timer per connection pool; no threads).
//
// Failing closed: an attempt that errs or exceeds attemptTimeout drops the whole pool (a dead pooled
// connection would stall every later query) and is retried once on a fresh connection; the second
// failure is reported. There is never a fallback to plain DNS. The endpoint's host is resolved by the
// BootstrapResolver and pinned; libcurl is forbidden to resolve anything itself.
//
// Everything, replies included, happens on the event loop's thread; a reply never comes from inside
// query().
class DohUpstream : public QObject
{
    Q_OBJECT

public:
    using Reply = std::function<void(std::optional<QByteArray> answer, QString error)>;

    explicit DohUpstream(UpstreamSettings settings, QObject *parent = nullptr);
    ~DohUpstream() override; // pending replies are dropped uncalled

    void query(QByteArray message, Reply reply);
    // The network changed: drop pooled connections, restart what is in flight, resolve the host again.
    void reset();

    // New connections made so far (diagnostics, tests): one per pool while the endpoint stays healthy.
    [[nodiscard]] quint64 connectionsOpened() const { return m_connectionsOpened; }

signals:
    void succeeded();
    void failed(const QString &error);

private:
    struct Request;
    class Pool;

    void bootstrap();
    void onBootstrapped(BootstrapResolver::Result result);
    void start(std::unique_ptr<Request> request);
    void onDone(CURL *easy, int code);
    void fail(std::unique_ptr<Request> request, const QString &error);
    QString describe(int code, const char *detail) const;
    void replaceAllPools();
    CURL *takeHandle();
    void releaseHandle(CURL *easy);
    void watchNetworkChanges();

    UpstreamSettings m_settings;
    QString m_host;
    int m_port = 443;
    bool m_needsBootstrap = false;
    bool m_bootstrapped = false;
    std::chrono::steady_clock::time_point m_pinExpires;
    struct SList;
    std::unique_ptr<SList> m_headers;
    std::unique_ptr<SList> m_resolve;
    BootstrapResolver m_resolver;
    QTimer m_refresh;
    std::deque<std::unique_ptr<Request>> m_waiting; // until the host is resolved
    std::unordered_map<CURL *, std::unique_ptr<Request>> m_running;
    std::unique_ptr<Pool> m_pool;
    std::vector<std::unique_ptr<Pool>> m_retiredPools;
    quint64 m_connectionsOpened = 0;
    std::vector<CURL *> m_freeHandles;
    std::unique_ptr<QSocketNotifier> m_netlink;
    QTimer m_netlinkSettle;
    int m_netlinkFd = -1;
};

} // namespace brivanta
