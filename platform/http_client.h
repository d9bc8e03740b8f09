#pragma once

#include "platform/platform_error.h"

#include <QUrl>
#include <chrono>
#include <functional>
#include <optional>

namespace brivanta {

// The loader's error domain and the codes the backends report in it (the phone platform's own values, so a
// description written to the console reads the same everywhere).
inline constexpr const char *nsURLErrorDomain = "NSURLErrorDomain";

enum NSURLErrorCode : qint64 {
    NSURLErrorUnknown = -1,
    NSURLErrorCancelled = -999,
    NSURLErrorBadURL = -1000,
    NSURLErrorTimedOut = -1001,
    NSURLErrorUnsupportedURL = -1002,
    NSURLErrorCannotFindHost = -1003,
    NSURLErrorCannotConnectToHost = -1004,
    NSURLErrorNetworkConnectionLost = -1005,
    NSURLErrorHTTPTooManyRedirects = -1007,
    NSURLErrorBadServerResponse = -1011,
    NSURLErrorSecureConnectionFailed = -1200,
    NSURLErrorServerCertificateUntrusted = -1202,
};

// A GET request as the phone platform's URLRequest describes it.
struct HttpRequest
{
    enum class CachePolicy {
        // The protocol's own rules: a fresh cached response may be reused.
        UseProtocolCachePolicy = 0,
    };

    QUrl url;
    CachePolicy cachePolicy = CachePolicy::UseProtocolCachePolicy;
    std::chrono::milliseconds timeoutInterval { 60'000 };
};

// What a finished request reports. A transport error and an HTTP status may both be present (for
// example a redirect that was not followed); the body is never reported.
struct HttpOutcome
{
    std::optional<PlatformError> error;
    // The final response's status code when an HTTP response arrived.
    std::optional<int> statusCode;

    friend bool operator==(const HttpOutcome &, const HttpOutcome &) = default;
};

// The shared URL loader: GET with redirects followed to the final response.
class HttpClient
{
public:
    // Called exactly once per request, on a thread of the client's choosing (never inside the call
    // that started the request). Callers hop to the main queue themselves.
    using Completion = std::function<void(HttpOutcome outcome)>;

    virtual ~HttpClient() = default;
    // Starts the request at once. Destroying the client drops the completions of requests still open.
    virtual void dataTask(const HttpRequest &request, Completion completion) = 0;
};

} // namespace brivanta
