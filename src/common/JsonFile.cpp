#include "common/JsonFile.h"

#include "common/AtomicFile.h"
#include "common/Log.h"

#include <QDateTime>
#include <QFile>
#include <QJsonParseError>

namespace {

// "<path>.unreadable-<date>-<time>", with a number after it when a file of that name is already there.
QString unusableFileName(const QString& path)
{
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString target = QStringLiteral("%1.unreadable-%2").arg(path, stamp);
    for (int n = 2; QFile::exists(target); ++n)
        target = QStringLiteral("%1.unreadable-%2-%3").arg(path, stamp).arg(n);
    return target;
}

} // namespace

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
    const QString target = unusableFileName(path);
    if (QFile::rename(path, target)) {
        logLine(QStringLiteral("state file unusable, kept aside path=%1 keptAs=%2 reason=%3")
                    .arg(logValue(path), logValue(target), logValue(reason)));
    } else {
        logLine(QStringLiteral("state file unusable and could not be kept aside path=%1 reason=%2")
                    .arg(logValue(path), logValue(reason)));
    }
}

bool keepCopyOfUnusableFile(const QString& path, const QByteArray& content, const QString& reason)
{
    const QString target = unusableFileName(path);
    if (const std::optional<QString> failure = writeFileAtomically(target, content)) {
        logLine(QStringLiteral("state file unusable and no copy could be kept path=%1 reason=%2 error=%3")
                    .arg(logValue(path), logValue(reason), logValue(*failure)));
        return false;
    }
    logLine(QStringLiteral("state file partly unusable, copy kept path=%1 keptAs=%2 reason=%3")
                .arg(logValue(path), logValue(target), logValue(reason)));
    return true;
}
