#include "app/UserDefaults.h"

#include "common/JsonFile.h"
#include "common/LocalPath.h"

#include <QCoreApplication>
#include <QFile>
#include <QSettings>

void setApplicationIdentity()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Velloru"));
    QCoreApplication::setApplicationName(QStringLiteral("Velloru"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VELLORU_VERSION));
    // Log lines carry their own "Velloru: " prefix; Qt would otherwise put the category name before it.
    if (qEnvironmentVariableIsEmpty("QT_MESSAGE_PATTERN"))
        qSetMessagePattern(QStringLiteral("%{message}"));
}

void keepUnreadableSettingsAside()
{
    QSettings settings;
    const QString path = settings.fileName();
    QFile file(path);
    if (!file.exists())
        return;
    if (!file.open(QIODevice::ReadOnly)) {
        setAsideUnusableFile(path, file.errorString());
        return;
    }
    const QByteArray content = file.readAll();
    // QSettings parses a section only when a key of it is first asked for; that is when a bad line is found.
    const QStringList keys = settings.allKeys();
    QString reason;
    if (settings.status() == QSettings::FormatError)
        reason = QStringLiteral("lines the settings reader cannot parse");
    else if (!LocalPath::isRepresentable(content))
        reason = QStringLiteral("bytes that are not UTF-8");
    else
        return;
    // Copied rather than moved: the rest of the file holds the user's choices (the welcome seen, permissions
    // granted before), which one bad line should not undo; the copy keeps every byte of the original.
    if (!keepCopyOfUnusableFile(path, content, reason)) {
        // Without a copy, Qt's next write would lose the original: keep it whole and start afresh.
        setAsideUnusableFile(path, reason);
        return;
    }
    for (const QString& key : keys) {
        const QVariant value = settings.value(key);
        if (value.isValid())
            settings.setValue(key, value);
        else
            settings.remove(key); // never written back as "@Invalid()"
    }
    settings.sync();
}
