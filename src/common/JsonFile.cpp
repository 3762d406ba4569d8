#include "common/JsonFile.h"

#include "common/Log.h"

#include <QDateTime>
#include <QFile>
#include <QJsonParseError>

JsonLoad loadJsonFile(const QString& path)
{
    QFile file(path);
    if (!file.exists())
        return {};
    if (!file.open(QIODevice::ReadOnly)) {
        setAsideUnusableFile(path, file.errorString());
        return {JsonLoad::Status::setAside, {}};
    }
    QJsonParseError error;
    QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError) {
        setAsideUnusableFile(path, QStringLiteral("%1 at offset %2").arg(error.errorString()).arg(error.offset));
        return {JsonLoad::Status::setAside, {}};
    }
    return {JsonLoad::Status::loaded, std::move(document)};
}

void setAsideUnusableFile(const QString& path, const QString& reason)
{
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString target = QStringLiteral("%1.unreadable-%2").arg(path, stamp);
    for (int n = 2; QFile::exists(target); ++n)
        target = QStringLiteral("%1.unreadable-%2-%3").arg(path, stamp).arg(n);

    if (QFile::rename(path, target)) {
        logLine(QStringLiteral("state file unusable, kept aside path=%1 keptAs=%2 reason=%3")
                    .arg(logValue(path), logValue(target), logValue(reason)));
    } else {
        logLine(QStringLiteral("state file unusable and could not be kept aside path=%1 reason=%2")
                    .arg(logValue(path), logValue(reason)));
    }
}
