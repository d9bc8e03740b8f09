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

    std::size_t openCount() const
    {
        std::lock_guard lock(m_mutex);
        return m_open.size();
    }

    // Completes the oldest open request to the URL on a thread of its own, as a real loader does.
    void completeOnOtherThread(const QUrl &url, HttpOutcome outcome)
    {
        Completion completion = take(url);
        std::thread loader([&] { completion(std::move(outcome)); });
        loader.join();
    }

    // Completes the newest open request to the URL, for runs that overlap.
    void completeNewestOnOtherThread(const QUrl &url, HttpOutcome outcome)
    {
        Completion completion = take(url, /*newest=*/true);
        std::thread loader([&] { completion(std::move(outcome)); });
        loader.join();
    }

    // Completes every open request, oldest first, each with the outcome chosen for its URL.
    template <typename Choose> void completeAll(Choose choose)
    {
        while (openCount() > 0) {
            QUrl url;
            {
                std::lock_guard lock(m_mutex);
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

    Completion take(const QUrl &url, bool newest = false)
    {
        std::lock_guard lock(m_mutex);
        auto found = m_open.end();
        for (auto it = m_open.begin(); it != m_open.end(); ++it) {
            if (it->url == url) {
                found = it;
                if (!newest)
                    break;
            }
        }
        if (found != m_open.end()) {
            Completion completion = std::move(found->completion);
            m_open.erase(found);
            return completion;
        }
        throw std::logic_error("no open request to " + url.toString().toStdString());
    }

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
