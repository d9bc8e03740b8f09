#include "ui/support_actions.h"

#include "support/share_and_rate.h"
#include "support/store_links.h"
#include "support/support_request.h"

namespace brivanta {

SupportActions::SupportActions(Dependencies dependencies, QObject *parent)
    : QObject(parent)
    , m_dependencies(dependencies)
{ }

void SupportActions::contactSupport()
{
    brivanta::contactSupport(
        m_dependencies.bundle, m_dependencies.device, m_dependencies.locale, m_dependencies.application);
}

void SupportActions::openOrvindoStorePage()
{
    brivanta::openOrvindoStorePage(m_dependencies.application);
}

void SupportActions::openVelloquinStorePage()
{
    brivanta::openVelloquinStorePage(m_dependencies.application);
}

void SupportActions::shareApp()
{
    brivanta::shareApp(m_dependencies.bundle, m_dependencies.application);
}

void SupportActions::rateApp()
{
    brivanta::rateApp(m_dependencies.application);
}

} // namespace brivanta
