#include "common/StoragePaths.h"

#include <QDir>

namespace {

QString xdgFolder(const char* variable, const QString& fallbackUnderHome)
{
    const QString value = qEnvironmentVariable(variable);
    // The XDG base directory standard says relative values are invalid and must be ignored.
    if (!value.isEmpty() && QDir::isAbsolutePath(value))
        return value;
    return QDir::homePath() + QLatin1Char('/') + fallbackUnderHome;
}

} // namespace

namespace StoragePaths {

QString dataHome()
{
    return xdgFolder("XDG_DATA_HOME", QStringLiteral(".local/share"));
}

QString dataFolder()
{
    return dataHome() + QStringLiteral("/Velloru");
}

QString cacheFolder()
{
    return xdgFolder("XDG_CACHE_HOME", QStringLiteral(".cache")) + QStringLiteral("/Velloru");
}

QString logsFolder()
{
    return xdgFolder("XDG_STATE_HOME", QStringLiteral(".local/state")) + QStringLiteral("/Velloru/logs");
}

} // namespace StoragePaths
