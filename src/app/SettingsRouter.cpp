#include "app/SettingsRouter.h"

void SettingsRouter::select(Tab tab)
{
    if (tab == m_selected)
        return;
    m_selected = tab;
    Q_EMIT selectedChanged(tab);
}

QString SettingsRouter::title(Tab tab)
{
    switch (tab) {
    case Tab::charts: return QStringLiteral("Charts");
    case Tab::services: return QStringLiteral("Services");
    case Tab::about: return QStringLiteral("About");
    }
    Q_UNREACHABLE();
}
