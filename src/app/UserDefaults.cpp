#include "app/UserDefaults.h"

#include <QCoreApplication>

void setApplicationIdentity()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Velloru"));
    QCoreApplication::setApplicationName(QStringLiteral("Velloru"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VELLORU_VERSION));
    // Log lines carry their own "Velloru: " prefix; Qt would otherwise put the category name before it.
    if (qEnvironmentVariableIsEmpty("QT_MESSAGE_PATTERN"))
        qSetMessagePattern(QStringLiteral("%{message}"));
}
