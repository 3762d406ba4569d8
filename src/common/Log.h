#pragma once

#include <QLoggingCategory>
#include <QString>

Q_DECLARE_LOGGING_CATEGORY(lcVelloru)

// Who writes a diagnostic line; each has its own prefix so that the lines can be told apart in the journal.
enum class LogSource { app, helper };

// Writes one diagnostic line, "Velloru: " (or "Velloru helper: ") followed by the message, to the log
// (stderr or the journal). Messages use key=value pairs so that a line can be found with grep. Control
// characters are escaped here too, so that no value can start a line of its own.
void logLine(const QString& message, LogSource source = LogSource::app);

// A line about the privileged helper, from either side of it.
inline void helperLog(const QString& message)
{
    logLine(message, LogSource::helper);
}

// A value for a key=value pair: as it is when it is plain, otherwise in double quotes with quotes,
// backslashes and control characters escaped, so that a path or a sentence can never pass itself off as
// another pair or another line.
QString logValue(const QString& value);
