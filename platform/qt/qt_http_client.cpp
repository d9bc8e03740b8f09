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
    case 305:
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
// headers, the end of the reply, or the deadline.
class Probe : public QObject
{
public:
    Probe(QNetworkReply *reply, QDeadlineTimer deadline, HttpClient::Completion completion, QObject *parent)
        : QObject(parent)
        , m_reply(reply)
        , m_completion(std::move(completion))
    {
        // Every redirect the loader offers is taken, including https -> http: a probe sends nothing
        // private and reads no body, and the platform's loader follows downgrades too.
        connect(reply, &QNetworkReply::redirected, this, [reply] { emit reply->redirectAllowed(); });
        connect(reply, &QNetworkReply::metaDataChanged, this, &Probe::onHeaders);
        connect(reply, &QNetworkReply::finished, this, &Probe::onFinished);

        // The platform's timeout (and QNetworkRequest::setTransferTimeout) restarts with every byte, so a
        // host that trickles its headers or streams a body forever would keep the request open without
        // end. This deadline counts from the start of the request and cuts it off whatever arrives.
        m_deadline.setSingleShot(true);
        m_deadline.setTimerType(Qt::PreciseTimer);
        connect(&m_deadline, &QTimer::timeout, this, [this] {
            complete(
                { urlError(NSURLErrorTimedOut, QStringLiteral("The request timed out.")), std::nullopt });
        });
        m_deadline.start(std::max<qint64>(0, deadline.remainingTime()));
    }

    // Drops the request without reporting it (the client is going away).
    void cancelSilently()
    {
        m_completion = nullptr;
        complete({});
    }

private:
    void onHeaders()
    {
        const std::optional<int> status = statusCodeOf(m_reply);
        if (!status)
            return;
        // A redirect with a target is followed; its own headers decide nothing.
        if (isRedirectStatus(*status)
            && m_reply->attribute(QNetworkRequest::RedirectionTargetAttribute).isValid())
            return;
        complete({ std::nullopt, status });
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
        // Aborting stops the body download; its own finished signal must not reach us again.
        m_reply->disconnect(this);
        m_reply->abort();
        m_reply->deleteLater();
        if (m_completion)
            m_completion(std::move(outcome));
        m_completion = nullptr;
        deleteLater();
    }

    QNetworkReply *m_reply;
    HttpClient::Completion m_completion;
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
            QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::UserVerifiedRedirectPolicy);
        networkRequest.setMaximumRedirectsAllowed(m_options.maximumRedirects);
        if (m_options.caCertificates) {
            QSslConfiguration ssl = QSslConfiguration::defaultConfiguration();
            ssl.setCaCertificates(*m_options.caCertificates);
            networkRequest.setSslConfiguration(ssl);
        }
        QNetworkReply *reply = manager()->get(networkRequest);
        new Probe(reply, deadline, std::move(completion), this);
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
