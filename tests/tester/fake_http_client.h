#pragma once

#include "platform/http_client.h"

#include <deque>
#include <stdexcept>
#include <thread>
#include <vector>

namespace brivanta::testing {

// Holds every request until the test completes it; only the completions leave the test's thread.
class FakeHttpClient final : public HttpClient
{
public:
    void dataTask(const HttpRequest &request, Completion completion) override
    {
        m_requests.push_back(request);
        m_open.emplace_back(request.url, std::move(completion));
    }

    const std::vector<HttpRequest> &requests() const { return m_requests; }

    // The oldest (or, for overlapping runs, the newest) open request to the URL, as a real loader does.
    void completeOnOtherThread(const QUrl &url, HttpOutcome outcome, bool newest = false)
    {
        auto found = m_open.end();
        for (auto it = m_open.begin(); it != m_open.end() && (newest || found == m_open.end()); ++it)
            found = it->first == url ? it : found;
        if (found == m_open.end())
            throw std::logic_error("no open request to " + url.toString().toStdString());
        Completion completion = std::move(found->second);
        m_open.erase(found);
        std::thread([&] { completion(std::move(outcome)); }).join();
    }

    // Every open request, oldest first, each with the outcome chosen for its URL.
    template <typename Choose> void completeAll(Choose choose)
    {
        while (!m_open.empty()) {
            const QUrl url = m_open.front().first;
            completeOnOtherThread(url, choose(url));
        }
    }

private:
    std::vector<HttpRequest> m_requests;
    std::deque<std::pair<QUrl, Completion>> m_open;
};

inline HttpOutcome httpStatus(int statusCode)
{
    return { std::nullopt, statusCode };
}

inline HttpOutcome transportError(NSURLErrorCode code)
{
    return { PlatformError { QString::fromLatin1(nsURLErrorDomain), code, QStringLiteral("failed") },
        std::nullopt };
}

} // namespace brivanta::testing
