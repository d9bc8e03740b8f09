#include "support/launch_counter.h"

#include "model/checked_int.h"
#include "platform/application_services.h"
#include "platform/preferences.h"
#include "support/open_link.h"

namespace brivanta {

void incrementLaunchCount(Preferences &preferences, ApplicationServices &application)
{
    const QString key = QString::fromLatin1(launchCountKey);
    const std::int64_t count = preferences.integerForKey(key);
    const std::int64_t newCount = checkedAdd(count, std::int64_t { 1 });
    // Stored before anything else is decided, so a skipped prompt is never retried early.
    preferences.setInteger(newCount, key);

    if (newCount % 5 != 0)
        return;
    if (WindowScene *scene = presentingWindowScene(application))
        application.requestReview(*scene);
}

} // namespace brivanta
