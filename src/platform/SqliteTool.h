#pragma once

#include <QString>

// Runs the sqlite3 command-line tool on a database with one batch of SQL, output discarded. True when it
// started and exited with status 0.
bool runSqliteScript(const QString& database, const QString& sql);
