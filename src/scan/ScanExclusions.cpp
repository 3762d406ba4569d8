#include "scan/ScanExclusions.h"

#include "common/AtomicFile.h"
#include "common/JsonFile.h"
#include "scan/ScanGroup.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>

ScanExclusions::ScanExclusions(QString dataFolder)
    : m_file(dataFolder + QStringLiteral("/scan-exclusions.json"))
{
    const JsonLoad loaded = loadJsonFile(m_file);
    if (loaded.status != JsonLoad::Status::loaded)
        return;
    if (!loaded.document.isArray()) {
        setAsideUnusableFile(m_file, QStringLiteral("not a list of paths"));
        return;
    }
    for (const QJsonValue& value : loaded.document.array())
        if (value.isString() && value.toString().startsWith(QLatin1Char('/')))
            m_paths.append(value.toString());
}

bool ScanExclusions::excludes(const QString& path) const
{
    for (const QString& excluded : m_paths)
        if (path == excluded || path.startsWith(excluded + QLatin1Char('/')))
            return true;
    return false;
}

std::optional<QString> ScanExclusions::add(const QString& path)
{
    if (m_paths.contains(path))
        return std::nullopt;
    m_paths.append(path);
    QDir().mkpath(QFileInfo(m_file).absolutePath());
    const QByteArray text = QJsonDocument(QJsonArray::fromStringList(m_paths)).toJson();
    if (const std::optional<QString> problem = writeFileAtomically(m_file, text))
        return QStringLiteral("Couldn’t remember to leave it out next time — %1").arg(*problem);
    return std::nullopt;
}

void ScanExclusions::removeExcluded(QList<ScanGroup>& groups) const
{
    if (m_paths.isEmpty())
        return;
    for (ScanGroup& group : groups)
        group.items.removeIf([this](const ScanItem& item) { return excludes(item.url.toLocalFile()); });
    groups.removeIf([](const ScanGroup& group) { return group.items.isEmpty(); });
}
