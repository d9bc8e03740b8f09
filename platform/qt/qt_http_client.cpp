// How the Qt HTTP client works. QNetworkAccessManager belongs to the thread that made it, and completions
// are meant to run off the main thread, as the phone platform's loader runs them; so the client owns a
// QThread with a Worker on it, and dataTask() only posts the request there. Each request becomes a Probe
// that follows redirects itself (see redirectTarget), completes on the final response's headers without
// reading the body (the tester only asks whether a host answered), and completes exactly once: headers,
// end of reply, or a deadline counted from dataTask(). Qt's errors are mapped to NSURLError codes so that
// the lines the app prints read the same on every backend.
//
// Threads: dataTask() on any thread; Probe, QNetworkReply signals and the completion on the worker thread.
// The destructor deletes the worker on its thread (blocking), which drops unfinished probes silently.

#include "platform/qt/qt_http_client.h"

#include <QDeadlineTimer>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslConfiguration>
#include <QTimer>
#include <algorithm>

namespace brivanta {

namespace {

PlatformError urlError(NSURLErrorCode code, const QString &description)
{
    return PlatformError { QString::fromLatin1(nsURLErrorDomain), code, description };
}

NSURLErrorCode errorCodeFor(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::ConnectionRefusedError:
        return NSURLErrorCannotConnectToHost;
    case QNetworkReply::RemoteHostClosedError:
        return NSURLErrorNetworkConnectionLost;
    case QNetworkReply::HostNotFoundError:
        return NSURLErrorCannotFindHost;
    case QNetworkReply::TimeoutError:
        return NSURLErrorTimedOut;
    case QNetworkReply::OperationCanceledError:
        return NSURLErrorCancelled;
    case QNetworkReply::SslHandshakeFailedError:
        return NSURLErrorSecureConnectionFailed;
    case QNetworkReply::TooManyRedirectsError:
        return NSURLErrorHTTPTooManyRedirects;
    case QNetworkReply::ProtocolUnknownError:
        return NSURLErrorUnsupportedURL;
    case QNetworkReply::ProtocolFailure:
    case QNetworkReply::ProtocolInvalidOperationError:
        return NSURLErrorBadServerResponse;
    default:
        return NSURLErrorUnknown;
    }
}

// Errors that only restate the HTTP status: the response did arrive, so they are not transport errors.
bool isStatusError(QNetworkReply::NetworkError error)
{
    return (error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError)
        || (error >= QNetworkReply::InternalServerError && error <= QNetworkReply::UnknownServerError);
}

bool isRedirectStatus(int status)
{
    switch (status) {
    case 301:
    case 302:
    case 303:
    case 307:
    case 308:
        return true;
    default:
        return false;
    }
}

std::optional<int> statusCodeOf(const QNetworkReply *reply)
{
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!status.isValid())
        return std::nullopt;
    return status.toInt();
}

// One request in flight, owned by the worker. Completes exactly once, whichever comes first: the final
// headers, the end of a reply, or the deadline.
class Probe : public QObject
{
public:
    Probe(QNetworkAccessManager &manager, QNetworkRequest request, int maximumRedirects,
        QDeadlineTimer deadline, HttpClient::Completion completion, QObject *parent)
        : QObject(parent)
        , m_manager(manager)
        , m_request(std::move(request))
        , m_redirectsLeft(maximumRedirects)
        , m_completion(std::move(completion))
    {
        // The phone platform's timeout (and QNetworkRequest::setTransferTimeout) restarts with every byte, so
        // a host that trickles its headers or streams a body forever would keep the request open without end.
        // This deadline counts from the start of the request, redirects included, and cuts it off whatever
        // arrives.
        m_deadline.setSingleShot(true);
        m_deadline.setTimerType(Qt::PreciseTimer);
        connect(&m_deadline, &QTimer::timeout, this, [this] {
            complete(
                { urlError(NSURLErrorTimedOut, QStringLiteral("The request timed out.")), std::nullopt });
        });
        m_deadline.start(std::max<qint64>(0, deadline.remainingTime()));
        send(m_request.url());
    }

    // Drops the request without reporting it (the client is going away).
    void cancelSilently()
    {
        m_completion = nullptr;
        complete({});
    }

private:
    void send(const QUrl &url)
    {
        m_request.setUrl(url);
        m_reply = m_manager.get(m_request);
        connect(m_reply, &QNetworkReply::metaDataChanged, this, &Probe::onHeaders);
        connect(m_reply, &QNetworkReply::finished, this, &Probe::onFinished);
    }

    void dropReply()
    {
        // Aborting stops the body download; the reply's own signals must not reach us any more. (For an
        // error status, Qt may still report the status as an error after the abort and warn about it.)
        m_reply->disconnect(this);
        m_reply->abort();
        m_reply->deleteLater();
        m_reply = nullptr;
    }

    void onHeaders()
    {
        const std::optional<int> status = statusCodeOf(m_reply);
        if (!status)
            return;
        if (const std::optional<QUrl> target = redirectTarget(*status)) {
            if (m_redirectsLeft == 0) {
                complete(
                    { urlError(NSURLErrorHTTPTooManyRedirects, QStringLiteral("too many HTTP redirects")),
                        status });
                return;
            }
            --m_redirectsLeft;
            dropReply();
            send(*target);
            return;
        }
        complete({ std::nullopt, status });
    }

    // Redirects are followed here rather than by the loader, whose own following re-sends requests on
    // kept-alive connections. Every http(s) target is taken, https -> http included: a probe sends
    // nothing private and reads no body, and the phone platform's loader follows downgrades too. A redirect
    // without a usable target is the final response.
    std::optional<QUrl> redirectTarget(int status) const
    {
        if (!isRedirectStatus(status) || !m_reply->hasRawHeader("Location"))
            return std::nullopt;
        const QUrl target = m_reply->url().resolved(QUrl(QString::fromUtf8(m_reply->rawHeader("Location"))));
        const QString scheme = target.scheme();
        if (!target.isValid() || target.host().isEmpty()
            || (scheme != QLatin1String("http") && scheme != QLatin1String("https")))
            return std::nullopt;
        return target;
    }

    void onFinished()
    {
        const QNetworkReply::NetworkError error = m_reply->error();
        if (error == QNetworkReply::NoError || isStatusError(error))
            complete({ std::nullopt, statusCodeOf(m_reply) });
        else
            complete({ urlError(errorCodeFor(error), m_reply->errorString()), statusCodeOf(m_reply) });
    }

    void complete(HttpOutcome outcome)
    {
        if (m_done)
            return;
        m_done = true;
        m_deadline.stop();
        if (m_reply)
            dropReply();
        if (m_completion)
            m_completion(std::move(outcome));
        m_completion = nullptr;
        deleteLater();
    }

    QNetworkAccessManager &m_manager;
    QNetworkRequest m_request;
    int m_redirectsLeft;
    HttpClient::Completion m_completion;
    QNetworkReply *m_reply = nullptr;
    QTimer m_deadline;
    bool m_done = false;
};

} // namespace

class QtHttpClient::Worker : public QObject
{
public:
    explicit Worker(Options options)
        : m_options(std::move(options))
    { }

    ~Worker() override
    {
        for (Probe *probe : findChildren<Probe *>(Qt::FindDirectChildrenOnly))
            probe->cancelSilently();
        delete m_manager;
    }

    void start(const HttpRequest &request, QDeadlineTimer deadline, Completion completion)
    {
        QNetworkRequest networkRequest(request.url);
        // The protocol's default cache policy.
        networkRequest.setAttribute(
            QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::PreferNetwork);
        networkRequest.setAttribute(
            QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
        if (m_options.caCertificates) {
            QSslConfiguration ssl = QSslConfiguration::defaultConfiguration();
            ssl.setCaCertificates(*m_options.caCertificates);
            networkRequest.setSslConfiguration(ssl);
        }
        new Probe(
            *manager(), networkRequest, m_options.maximumRedirects, deadline, std::move(completion), this);
    }

private:
    QNetworkAccessManager *manager()
    {
        // Made on first use so that it lives on the worker thread.
        if (!m_manager)
            m_manager = new QNetworkAccessManager;
        return m_manager;
    }

    Options m_options;
    QNetworkAccessManager *m_manager = nullptr;
};

QtHttpClient::QtHttpClient()
    : QtHttpClient(Options {})
{ }

QtHttpClient::QtHttpClient(Options options)
    : m_worker(new Worker(std::move(options)))
{
    m_thread.setObjectName(QStringLiteral("QtHttpClient"));
    m_worker->moveToThread(&m_thread);
    m_thread.start();
}

QtHttpClient::~QtHttpClient()
{
    QMetaObject::invokeMethod(
        m_worker, [worker = m_worker] { delete worker; }, Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

void QtHttpClient::dataTask(const HttpRequest &request, Completion completion)
{
    // The timeout runs from here, not from when the worker gets to the request.
    const QDeadlineTimer deadline(request.timeoutInterval, Qt::PreciseTimer);
    QMetaObject::invokeMethod(
        m_worker,
        [worker = m_worker, request, deadline, completion = std::move(completion)]() mutable {
            worker->start(request, deadline, std::move(completion));
        },
        Qt::QueuedConnection);
}

} // namespace brivanta
