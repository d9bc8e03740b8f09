#include "platform/qt/settings_preferences.h"

namespace brivanta {

SettingsPreferences::SettingsPreferences() = default;

SettingsPreferences::SettingsPreferences(const QString &fileName)
    : m_settings(fileName, QSettings::NativeFormat)
{ }

std::int64_t SettingsPreferences::integerForKey(const QString &key) const
{
    // Anything but an integer (hand-edited text, a fraction) reads as the missing key's 0.
    bool ok = false;
    const qlonglong value = m_settings.value(key).toLongLong(&ok);
    return ok ? value : 0;
}

void SettingsPreferences::setInteger(std::int64_t value, const QString &key)
{
    m_settings.setValue(key, static_cast<qlonglong>(value));
    m_settings.sync();
}

} // namespace brivanta
