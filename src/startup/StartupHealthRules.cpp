#include "startup/StartupHealthRules.h"

#include "startup/LaunchAgentInfo.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>

bool StartupHealthRules::liesInTrash(const QString& program, const QString& homeTrash)
{
    static const QRegularExpression trashFolder(
        QStringLiteral("(^|/)(\\.local/share/Trash|\\.Trash-[0-9]+|\\.Trash/[0-9]+)(/|$)"));
    if (!homeTrash.isEmpty() && (program == homeTrash || program.startsWith(homeTrash + QLatin1Char('/'))))
        return true;
    return trashFolder.match(program).hasMatch();
}

StartupHealth StartupHealthRules::healthOf(const QString& program, const QString& homeTrash)
{
    if (program.isEmpty() || program == LaunchAgentInfo::noProgram())
        return StartupHealth::programMissing;
    if (liesInTrash(program, homeTrash))
        return StartupHealth::appInTrash;
    const bool exists = program.startsWith(QLatin1Char('/')) ? QFileInfo::exists(program)
                                                             : !QStandardPaths::findExecutable(program).isEmpty();
    return exists ? StartupHealth::ok : StartupHealth::programMissing;
}
