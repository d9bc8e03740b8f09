#include "forwarder/doh_upstream.h"

#include <QLoggingCategory>
#include <QRegularExpression>
#include <algorithm>
#include <cstring>
#include <curl/curl.h>

#ifdef __linux__
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

Q_LOGGING_CATEGORY(lcUpstream, "brivanta.dohd.upstream", QtWarningMsg)

namespace brivanta {

namespace {

constexpr size_t maxFreeHandles = 256;
constexpr std::chrono::milliseconds bootstrapTimeout { 1000 };

size_t appendBody(char *data, size_t size, size_t count, void *userp)
{
    static_cast<QByteArray *>(userp)->append(data, qsizetype(size * count));
    return size * count;
}

// curl must never resolve a name itself: through the system resolver it could ask this very forwarder.
int refuseResolving(void *, void *, void *)
{
    return 1;
}

void curlGlobalInit()
{
    static const bool done = [] {
        curl_global_init(CURL_GLOBAL_DEFAULT);
        return true;
    }();
    Q_UNUSED(done)
}

} // namespace

struct DohUpstream::SList
{
    curl_slist *list = nullptr;
    ~SList() { curl_slist_free_all(list); }
    void append(const QByteArray &line) { list = curl_slist_append(list, line.constData()); }
};

struct DohUpstream::Request
{
    QByteArray body;
    Reply reply;
    QByteArray response;
    int attempts = 0;
    char error[CURL_ERROR_SIZE] {};
};

// One libcurl multi handle, i.e. one pool of connections, on the Qt event loop. Replacing the pool is how
// a dead connection is dropped: libcurl keeps an HTTP/2 connection whose stream timed out.
class DohUpstream::Pool
{
public:
    explicit Pool(std::function<void(CURL *, int)> done)
        : m_done(std::move(done))
    {
        m_multi = curl_multi_init();
        curl_multi_setopt(m_multi, CURLMOPT_SOCKETFUNCTION, &Pool::onSocket);
        curl_multi_setopt(m_multi, CURLMOPT_SOCKETDATA, this);
        curl_multi_setopt(m_multi, CURLMOPT_TIMERFUNCTION, &Pool::onTimer);
        curl_multi_setopt(m_multi, CURLMOPT_TIMERDATA, this);
        curl_multi_setopt(m_multi, CURLMOPT_PIPELINING, long(CURLPIPE_MULTIPLEX));
        curl_multi_setopt(m_multi, CURLMOPT_MAX_HOST_CONNECTIONS, 1L);
        curl_multi_setopt(m_multi, CURLMOPT_MAX_CONCURRENT_STREAMS, 1000L);
        m_timer.setSingleShot(true);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { action(CURL_SOCKET_TIMEOUT, 0); });
    }

    ~Pool()
    {
        m_closing = true;
        curl_multi_cleanup(m_multi);
    }

    void add(CURL *easy) { curl_multi_add_handle(m_multi, easy); }

    void remove(CURL *easy) { curl_multi_remove_handle(m_multi, easy); }

private:
    struct Watch
    {
        std::unique_ptr<QSocketNotifier> read;
        std::unique_ptr<QSocketNotifier> write;
    };

    static int onSocket(CURL *, curl_socket_t socket, int what, void *userp, void *)
    {
        auto *self = static_cast<Pool *>(userp);
        if (self->m_closing)
            return 0;
        if (what == CURL_POLL_REMOVE) {
            self->unwatch(socket);
            return 0;
        }
        Watch &watch = self->m_watches[socket];
        const auto ensure = [&](std::unique_ptr<QSocketNotifier> &notifier, QSocketNotifier::Type type,
                                int flag, bool wanted) {
            if (!wanted) {
                if (notifier)
                    notifier->setEnabled(false);
                return;
            }
            if (!notifier) {
                notifier = std::make_unique<QSocketNotifier>(socket, type);
                QObject::connect(notifier.get(), &QSocketNotifier::activated,
                    [self, socket, flag] { self->action(socket, flag); });
            }
            notifier->setEnabled(true);
        };
        ensure(watch.read, QSocketNotifier::Read, CURL_CSELECT_IN,
            what == CURL_POLL_IN || what == CURL_POLL_INOUT);
        ensure(watch.write, QSocketNotifier::Write, CURL_CSELECT_OUT,
            what == CURL_POLL_OUT || what == CURL_POLL_INOUT);
        return 0;
    }

    static int onTimer(CURLM *, long timeoutMs, void *userp)
    {
        auto *self = static_cast<Pool *>(userp);
        if (timeoutMs < 0)
            self->m_timer.stop();
        else
            self->m_timer.start(int(std::min(timeoutMs, 24L * 3600 * 1000)));
        return 0;
    }

    void unwatch(curl_socket_t socket)
    {
        auto found = m_watches.find(socket);
        if (found == m_watches.end())
            return;
        // The notifier may be the one whose signal is running: disable it now, delete it later.
        for (auto *notifier : { found->second.read.release(), found->second.write.release() }) {
            if (notifier) {
                notifier->setEnabled(false);
                notifier->deleteLater();
            }
        }
        m_watches.erase(found);
    }

    void action(curl_socket_t socket, int flags)
    {
        int running = 0;
        curl_multi_socket_action(m_multi, socket, flags, &running);
        // A completion may replace this pool; it then goes away only after this call returns.
        int left = 0;
        while (CURLMsg *message = curl_multi_info_read(m_multi, &left)) {
            if (message->msg != CURLMSG_DONE)
                continue;
            CURL *easy = message->easy_handle;
            const CURLcode code = message->data.result;
            curl_multi_remove_handle(m_multi, easy);
            m_done(easy, int(code));
        }
    }

    std::function<void(CURL *, int)> m_done;
    CURLM *m_multi = nullptr;
    QTimer m_timer;
    std::unordered_map<curl_socket_t, Watch> m_watches;
    bool m_closing = false;
};

DohUpstream::DohUpstream(UpstreamSettings settings, QObject *parent)
    : QObject(parent)
    , m_settings(std::move(settings))
    , m_headers(std::make_unique<SList>())
    , m_resolve(std::make_unique<SList>())
    , m_resolver(bootstrapTimeout)
{
    curlGlobalInit();
    m_host = m_settings.endpoint.host();
    m_port = m_settings.endpoint.port(443);
    m_headers->append("Content-Type: application/dns-message");
    m_headers->append("Accept: application/dns-message");
    for (const QString &pin : std::as_const(m_settings.pins))
        m_resolve->append(pin.toLatin1());
    // An address as host, or pins given: nothing to resolve.
    m_needsBootstrap = QHostAddress(m_host).isNull() && m_settings.pins.isEmpty();
    m_bootstrapped = !m_needsBootstrap;
    m_refresh.setSingleShot(true);
    connect(&m_refresh, &QTimer::timeout, this, &DohUpstream::bootstrap);
    m_pool = std::make_unique<Pool>([this](CURL *easy, int code) { onDone(easy, code); });
    watchNetworkChanges();
    if (m_needsBootstrap)
        bootstrap();
}

DohUpstream::~DohUpstream()
{
    for (auto &[easy, request] : m_running)
        m_pool->remove(easy);
    m_pool.reset();
    m_retiredPools.clear();
    for (auto &[easy, request] : m_running)
        curl_easy_cleanup(easy);
    for (CURL *easy : m_freeHandles)
        curl_easy_cleanup(easy);
#ifdef __linux__
    m_netlink.reset();
    if (m_netlinkFd >= 0)
        ::close(m_netlinkFd);
#endif
}

void DohUpstream::query(QByteArray message, Reply reply)
{
    auto request = std::make_unique<Request>();
    request->body = std::move(message);
    request->reply = std::move(reply);
    if (!m_bootstrapped) {
        m_waiting.push_back(std::move(request));
        if (!m_resolver.busy())
            bootstrap();
        return;
    }
    start(std::move(request));
}

void DohUpstream::reset()
{
    qCInfo(lcUpstream) << "network changed: new connection pool";
    replaceAllPools();
    if (m_needsBootstrap)
        bootstrap();
}

void DohUpstream::bootstrap()
{
    if (!m_needsBootstrap)
        return;
    m_resolver.resolve(m_host, m_settings.bootstrap,
        [this](BootstrapResolver::Result result) { onBootstrapped(std::move(result)); });
}

void DohUpstream::onBootstrapped(BootstrapResolver::Result result)
{
    if (result.addresses.empty()) {
        qCWarning(lcUpstream) << result.error;
        emit failed(result.error);
        // Keep the addresses we had, if any; try again soon.
        m_refresh.start(std::chrono::seconds(m_bootstrapped ? 30 : 5));
        if (!m_bootstrapped) {
            auto waiting = std::move(m_waiting);
            for (auto &request : waiting)
                fail(std::move(request), result.error);
        }
        return;
    }
    QStringList addresses;
    for (const QHostAddress &address : result.addresses) {
        addresses << (address.protocol() == QAbstractSocket::IPv6Protocol
                ? QLatin1Char('[') + address.toString() + QLatin1Char(']')
                : address.toString());
    }
    const QByteArray entry
        = QStringLiteral("%1:%2:%3").arg(m_host).arg(m_port).arg(addresses.join(QLatin1Char(','))).toLatin1();
    const bool changed = !m_resolve->list || entry != QByteArray(m_resolve->list->data);
    if (changed) {
        m_resolve = std::make_unique<SList>();
        m_resolve->append(entry);
        // curl's DNS cache lives in the pool: a new pool sees the new addresses.
        if (m_bootstrapped)
            replaceAllPools();
    }
    qCInfo(lcUpstream) << "pinned" << entry << "for" << result.ttl.count() << "s";
    m_bootstrapped = true;
    m_refresh.start(result.ttl);
    auto waiting = std::move(m_waiting);
    for (auto &request : waiting)
        start(std::move(request));
}

CURL *DohUpstream::takeHandle()
{
    if (!m_freeHandles.empty()) {
        CURL *easy = m_freeHandles.back();
        m_freeHandles.pop_back();
        return easy;
    }
    CURL *easy = curl_easy_init();
    const QByteArray url = m_settings.endpoint.toString(QUrl::FullyEncoded).toLatin1();
    curl_easy_setopt(easy, CURLOPT_URL, url.constData());
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, long(CURL_HTTP_VERSION_2TLS));
    curl_easy_setopt(easy, CURLOPT_PIPEWAIT, 1L);
    curl_easy_setopt(easy, CURLOPT_TCP_NODELAY, 1L);
    curl_easy_setopt(easy, CURLOPT_TCP_KEEPALIVE, 1L);
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "https");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, m_headers->list);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &appendBody);
    // The pin is re-applied on every transfer; nothing else may be looked up. An address literal needs no
    // lookup (curl checks for one only after this callback, so it is left out then).
    if (m_needsBootstrap || !m_settings.pins.isEmpty())
        curl_easy_setopt(easy, CURLOPT_RESOLVER_START_FUNCTION, &refuseResolving);
    curl_easy_setopt(easy, CURLOPT_DNS_CACHE_TIMEOUT, -1L);
    const long timeout = long(m_settings.attemptTimeout.count());
    curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, timeout);
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, timeout);
    curl_easy_setopt(easy, CURLOPT_USERAGENT, "brivanta-dohd");
    if (!m_settings.caFile.isEmpty()) {
        const QByteArray ca = m_settings.caFile.toLocal8Bit();
        curl_easy_setopt(easy, CURLOPT_CAINFO, ca.constData()); // libcurl copies the string
    }
    return easy;
}

void DohUpstream::releaseHandle(CURL *easy)
{
    if (m_freeHandles.size() < maxFreeHandles)
        m_freeHandles.push_back(easy);
    else
        curl_easy_cleanup(easy);
}

void DohUpstream::start(std::unique_ptr<Request> request)
{
    CURL *easy = takeHandle();
    request->response.clear();
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request->body.constData());
    curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE, long(request->body.size()));
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &request->response);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, request->error);
    request->error[0] = '\0';
    curl_easy_setopt(easy, CURLOPT_RESOLVE, m_resolve->list);
    m_running.emplace(easy, std::move(request));
    m_pool->add(easy);
}

void DohUpstream::onDone(CURL *easy, int code)
{
    auto found = m_running.find(easy);
    if (found == m_running.end())
        return;
    std::unique_ptr<Request> request = std::move(found->second);
    m_running.erase(found);

    long status = 0;
    char *contentType = nullptr;
    long connects = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    curl_easy_getinfo(easy, CURLINFO_CONTENT_TYPE, &contentType);
    curl_easy_getinfo(easy, CURLINFO_NUM_CONNECTS, &connects);
    m_connectionsOpened += quint64(std::max(connects, 0L));
    const bool dnsMessage = contentType && qstrnicmp(contentType, "application/dns-message", 23) == 0;
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, nullptr);
    releaseHandle(easy);

    const QByteArray &body = request->response;
    const bool isResponse = body.size() >= 12 && (quint8(body[2]) & 0x80) != 0; // QR set
    if (code == CURLE_OK && status == 200 && dnsMessage && isResponse) {
        emit succeeded();
        Reply reply = std::move(request->reply);
        reply(std::move(request->response), QString());
        return;
    }
    QString error;
    if (code != CURLE_OK)
        error = describe(CURLcode(code), request->error);
    else if (status != 200)
        error = QStringLiteral("HTTP %1 from %2").arg(status).arg(m_host);
    else if (!dnsMessage)
        error = QStringLiteral("%1 answered with content type \"%2\", not application/dns-message")
                    .arg(m_host, QString::fromLatin1(contentType ? contentType : ""));
    else
        error = QStringLiteral("%1 answered something that is not a DNS response").arg(m_host);

    if (code != CURLE_OK && request->attempts == 0) {
        // The connection may be dead (network change, resume): start over on a fresh one, and look the
        // host up again in case it moved.
        qCInfo(lcUpstream) << error << "- retrying on a fresh connection";
        replaceAllPools();
        request->attempts = 1;
        start(std::move(request));
        if (m_needsBootstrap && !m_resolver.busy())
            bootstrap();
        return;
    }
    fail(std::move(request), error);
}

QString DohUpstream::describe(int code, const char *detail) const
{
    QString text = detail && *detail ? QString::fromUtf8(detail)
                                     : QString::fromUtf8(curl_easy_strerror(CURLcode(code)));
    switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
        return QStringLiteral("no answer from %1 within %2 ms")
            .arg(m_host)
            .arg(m_settings.attemptTimeout.count());
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
        // "SSL certificate problem: ..." reads better without curl's own prefix.
        text.remove(QRegularExpression(QStringLiteral("^SSL certificate problem: ")));
        return QStringLiteral("TLS with %1: %2").arg(m_host, text);
    default:
        return QStringLiteral("%1: %2").arg(m_host, text);
    }
}

void DohUpstream::fail(std::unique_ptr<Request> request, const QString &error)
{
    qCWarning(lcUpstream) << error;
    emit failed(error);
    Reply reply = std::move(request->reply);
    // Replies are never given from inside query(); a failure found during bootstrap is not in query().
    reply(std::nullopt, error);
}

void DohUpstream::replaceAllPools()
{
    // Take every running transfer out of the old pool, then restart it in the new one.
    std::vector<CURL *> running;
    running.reserve(m_running.size());
    for (auto &[easy, request] : m_running) {
        m_pool->remove(easy);
        running.push_back(easy);
    }
    // The old pool may be the one reporting right now: delete it on the next turn of the loop.
    m_retiredPools.push_back(std::move(m_pool));
    QTimer::singleShot(0, this, [this] { m_retiredPools.clear(); });
    m_pool = std::make_unique<Pool>([this](CURL *easy, int code) { onDone(easy, code); });
    for (CURL *easy : running) {
        Request &request = *m_running.at(easy);
        request.response.clear();
        request.attempts = 1;
        curl_easy_setopt(easy, CURLOPT_RESOLVE, m_resolve->list);
        m_pool->add(easy);
    }
}

void DohUpstream::watchNetworkChanges()
{
#ifdef __linux__
    // An address that comes or goes means the pooled connection may be dead (resume, another network):
    // start over at once rather than waiting for a query to time out.
    m_netlinkFd = ::socket(AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE);
    if (m_netlinkFd < 0)
        return;
    sockaddr_nl address {};
    address.nl_family = AF_NETLINK;
    address.nl_groups = RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR;
    if (::bind(m_netlinkFd, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0) {
        ::close(m_netlinkFd);
        m_netlinkFd = -1;
        return;
    }
    m_netlinkSettle.setSingleShot(true);
    m_netlinkSettle.setInterval(std::chrono::milliseconds(200));
    connect(&m_netlinkSettle, &QTimer::timeout, this, &DohUpstream::reset);
    m_netlink = std::make_unique<QSocketNotifier>(m_netlinkFd, QSocketNotifier::Read);
    connect(m_netlink.get(), &QSocketNotifier::activated, this, [this] {
        char buffer[8192];
        bool changed = false;
        ssize_t n = 0;
        while ((n = ::recv(m_netlinkFd, buffer, sizeof buffer, 0)) > 0) {
            for (auto *header = reinterpret_cast<nlmsghdr *>(buffer); NLMSG_OK(header, size_t(n));
                 header = NLMSG_NEXT(header, n)) {
                changed = changed || header->nlmsg_type == RTM_NEWADDR || header->nlmsg_type == RTM_DELADDR;
            }
        }
        if (changed)
            m_netlinkSettle.start();
    });
#endif
}

} // namespace brivanta
