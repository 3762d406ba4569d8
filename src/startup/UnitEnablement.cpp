#include "startup/UnitEnablement.h"

#include <QDir>
#include <QFileInfo>

namespace {

// "getty@tty1.service" → "getty@.service"; other names stay as they are.
QString templateOf(const QString& unit)
{
    const qsizetype at = unit.indexOf(QLatin1Char('@'));
    const qsizetype dot = unit.lastIndexOf(QLatin1Char('.'));
    if (at < 0 || dot <= at + 1)
        return unit;
    return unit.left(at + 1) + unit.mid(dot);
}

} // namespace

UnitEnablement UnitEnablement::read(const QStringList& configFolders)
{
    UnitEnablement enablement;
    for (const QString& folder : configFolders) {
        const QDir dir(folder);
        for (const QFileInfo& entry : dir.entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
            if (entry.isSymLink() && entry.symLinkTarget() == QLatin1String("/dev/null")) {
                enablement.masked.insert(entry.fileName());
                continue;
            }
            const QString name = entry.fileName();
            if (!entry.isDir()
                || !(name.endsWith(QLatin1String(".wants")) || name.endsWith(QLatin1String(".requires"))))
                continue;
            for (const QString& unit :
                QDir(entry.filePath()).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
                enablement.wanted.insert(unit);
                enablement.wanted.insert(templateOf(unit));
            }
        }
    }
    return enablement;
}
