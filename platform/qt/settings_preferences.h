#pragma once

#include "platform/preferences.h"

#include <QSettings>

namespace brivanta {

// Preferences on QSettings in the native format. The default store is the one named by the
// application's organisation and application names, which the app sets before creating this.
class SettingsPreferences final : public Preferences
{
public:
    SettingsPreferences();
    // A store in the given file (native format); tests use a temporary file.
    explicit SettingsPreferences(const QString &fileName);

    std::int64_t integerForKey(const QString &key) const override;
    void setInteger(std::int64_t value, const QString &key) override;

private:
    mutable QSettings m_settings;
};

} // namespace brivanta
