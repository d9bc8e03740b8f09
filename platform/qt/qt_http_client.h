#pragma once

#include "platform/http_client.h"

#include <QList>
#include <QSslCertificate>
#include <QThread>
#include <optional>

namespace brivanta {

// The shared URL loader on QNetworkAccessManager, run on a thread of its own: completions arrive on
// that thread. Redirects are followed (https -> http included, as the phone platform's loader does), at most
// `maximumRedirects` of them. The status is decided when the final response's headers arrive; the body
// is never downloaded. A request is cut off at its timeout counted from the start, not from the last
// byte received.
class QtHttpClient final : public HttpClient
{
public:
    struct Options
    {
        // Replaces the system's trusted roots; only tests set it (to trust a generated certificate).
        // Certificate and host name checks stay on either way.
        std::optional<QList<QSslCertificate>> caCertificates;
        int maximumRedirects = 16;
    };

    QtHttpClient();
    explicit QtHttpClient(Options options);
    ~QtHttpClient() override;

    QtHttpClient(const QtHttpClient &) = delete;
    QtHttpClient &operator=(const QtHttpClient &) = delete;

    void dataTask(const HttpRequest &request, Completion completion) override;

private:
    class Worker;

    QThread m_thread;
    Worker *m_worker;
};

} // namespace brivanta
