#pragma once

#include <QLoggingCategory>
#include <QString>

Q_DECLARE_LOGGING_CATEGORY(lcVelloru)

// Writes one diagnostic line, "Velloru: " followed by the message, to the log (stderr or the journal).
// Messages use key=value pairs so that a line can be found with grep.
void logLine(const QString& message);
