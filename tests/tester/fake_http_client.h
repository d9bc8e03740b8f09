#pragma once

#include "platform/http_client.h"

#include <deque>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

namespace brivanta::testing {

// Records every request and holds its completion until the test releases it.
class FakeHttpClient final : public HttpClient
{
public:
    void dataTask(const HttpRequest &request, Completion completion) override
    {
        std::lock_guard lock(m_mutex);
        m_requests.push_back(request);
        m_open.push_back({ request.url, std::move(completion) });
    }

    std::vector<HttpRequest> requests() const
    {
        std::lock_guard lock(m_mutex);
        return m_requests;
    }

    // Completes the oldest (or, for overlapping runs, the newest) open request to the URL on a thread of
    // its own, as a real loader does.
    void completeOnOtherThread(const QUrl &url, HttpOutcome outcome, bool newest = false)
    {
        Completion completion;
        {
            std::lock_guard lock(m_mutex);
            auto found = m_open.end();
            for (auto it = m_open.begin(); it != m_open.end() && (newest || found == m_open.end()); ++it)
                found = it->url == url ? it : found;
            if (found == m_open.end())
                throw std::logic_error("no open request to " + url.toString().toStdString());
            completion = std::move(found->completion);
            m_open.erase(found);
        }
        std::thread([&] { completion(std::move(outcome)); }).join();
    }

    // Completes every open request, oldest first, each with the outcome chosen for its URL.
    template <typename Choose> void completeAll(Choose choose)
    {
        for (;;) {
            QUrl url;
            {
                std::lock_guard lock(m_mutex);
                if (m_open.empty())
                    return;
                url = m_open.front().url;
            }
            completeOnOtherThread(url, choose(url));
        }
    }

private:
    struct Open
    {
        QUrl url;
        Completion completion;
    };

    mutable std::mutex m_mutex;
    std::vector<HttpRequest> m_requests;
    std::deque<Open> m_open;
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
