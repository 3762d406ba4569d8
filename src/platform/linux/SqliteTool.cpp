#include "platform/SqliteTool.h"

#include <QProcess>

bool runSqliteScript(const QString& database, const QString& sql)
{
    QProcess sqlite;
    sqlite.setProcessChannelMode(QProcess::MergedChannels);
    sqlite.start(QStringLiteral("/usr/bin/sqlite3"), {database, sql});
    if (!sqlite.waitForFinished(10 * 60 * 1000)) {
        sqlite.kill();
        sqlite.waitForFinished(2000);
        return false;
    }
    return sqlite.exitStatus() == QProcess::NormalExit && sqlite.exitCode() == 0;
}
