#pragma once

#include "apps/InstalledApp.h"
#include "platform/ProcessTable.h"

#include <QHash>
#include <QList>

// Which installed apps a process belongs to. A process belongs to an app when its program name equals the
// app's, when it runs the Flatpak app, or when its program lies in the app's own program folder (as Chrome's
// does under /opt/google/chrome; the shared bin folders do not count). The running-apps monitor and the
// process list both go by these rules.
class AppMatcher {
public:
    explicit AppMatcher(const QList<InstalledApp>& apps);

    // Positions in the list of apps, the surest match first: the Flatpak app, then the program name, then
    // the program folder (which several apps may share).
    QList<qsizetype> appsOf(const ProcessInfo& process) const;

private:
    QMultiHash<QString, qsizetype> m_byProgramName; // lower-cased
    QMultiHash<QString, qsizetype> m_byFlatpakID;   // lower-cased
    QList<QPair<QString, qsizetype>> m_byFolder;    // the app's own program folder, with a final '/'
};
