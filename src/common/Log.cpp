#include "common/Log.h"

Q_LOGGING_CATEGORY(lcVelloru, "velloru")

void logLine(const QString& message)
{
    qCInfo(lcVelloru).noquote() << QStringLiteral("Velloru: ") + message;
}
