#include "support/launch_counter.h"

#include "platform/application_services.h"
#include "platform/preferences.h"
#include "support/open_link.h"

#include <cstdlib>
#include <limits>

namespace brivanta {

void incrementLaunchCount(Preferences &preferences, ApplicationServices &application)
{
    const QString key = QString::fromLatin1(launchCountKey);
    const std::int64_t count = preferences.integerForKey(key);
    if (count == std::numeric_limits<std::int64_t>::max())
        std::abort();
    const std::int64_t newCount = count + 1;
    // Stored before anything else is decided, so a skipped prompt is never retried early.
    preferences.setInteger(newCount, key);

    if (newCount % 5 != 0)
        return;
    if (WindowScene *scene = presentingWindowScene(application))
        application.requestReview(*scene);
}

} // namespace brivanta
