#include "startup/ServiceManagerRecords.h"

#include "common/Log.h"
#include "platform/SystemdCommands.h"
#include "startup/Shell.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <mutex>

namespace {

struct Kept {
    std::optional<QHash<QString, QString>> records;
    std::chrono::steady_clock::time_point readAt;
    bool valid = false;
};

std::mutex keptLock; // guards kept
Kept kept;

} // namespace

std::optional<QHash<QString, QString>> ServiceManagerRecords::parse(const QByteArray& json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !document.isArray())
        return std::nullopt;
    QHash<QString, QString> records;
    for (const QJsonValue& value : document.array()) {
        const QJsonObject record = value.toObject();
        const QString unit = record.value(QStringLiteral("unit")).toString();
        if (!unit.isEmpty())
            records.insert(unit, record.value(QStringLiteral("active")).toString());
    }
    return records;
}

std::optional<QHash<QString, QString>> ServiceManagerRecords::read()
{
    std::lock_guard lock(keptLock);
    const auto now = std::chrono::steady_clock::now();
    if (kept.valid && now - kept.readAt < keptFor)
        return kept.records;
    const ShellResult result = Shell::run(SystemdCommands::loadedUserUnits(), limit);
    kept.records = result.succeeded() ? parse(result.output) : std::nullopt;
    if (!kept.records)
        logLine(QStringLiteral("user service manager not readable problem=%1").arg(logValue(result.problem())));
    kept.readAt = now;
    kept.valid = true;
    return kept.records;
}

void ServiceManagerRecords::forget()
{
    std::lock_guard lock(keptLock);
    kept.valid = false;
}
