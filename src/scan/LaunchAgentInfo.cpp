#include "scan/LaunchAgentInfo.h"

#include "apps/DesktopEntry.h"
#include "scan/FolderEntries.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

bool programExists(const QString& program)
{
    if (program.startsWith(QLatin1Char('/')))
        return QFileInfo::exists(program);
    return !QStandardPaths::findExecutable(program).isEmpty();
}

std::optional<LaunchAgentInfo> readUnit(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    LaunchAgentInfo info;
    info.id = path;
    info.label = QFileInfo(path).fileName();
    QString section;
    QString execStart;
    for (const QByteArray& rawLine : file.read(1024 * 1024).split('\n')) {
        const QString line = QString::fromUtf8(rawLine).trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            section = line;
            continue;
        }
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (equals <= 0 || line.startsWith(QLatin1Char('#')) || line.startsWith(QLatin1Char(';')))
            continue;
        const QString key = line.left(equals).trimmed();
        const QString value = line.mid(equals + 1).trimmed();
        if (section == QLatin1String("[Service]") && key == QLatin1String("ExecStart") && execStart.isEmpty())
            execStart = value;
        else if (section == QLatin1String("[Service]") && key == QLatin1String("Restart"))
            info.keepAlive = value != QLatin1String("no");
        else if (section == QLatin1String("[Install]") && key == QLatin1String("WantedBy"))
            info.runAtLoad = !value.isEmpty();
    }
    // ExecStart may begin with the prefixes "@-:+!" that change how systemd runs the program.
    qsizetype start = 0;
    while (start < execStart.size() && QStringLiteral("@-:+!").contains(execStart[start]))
        ++start;
    const QStringList words = splitCommandLine(execStart.mid(start));
    info.program = words.isEmpty() ? LaunchAgentInfo::noProgram() : words.first();
    return info;
}

std::optional<LaunchAgentInfo> readAutostart(const QString& path)
{
    const std::optional<DesktopEntry> entry = DesktopEntry::read(path);
    if (!entry || entry->flag(QStringLiteral("Hidden")))
        return std::nullopt;
    LaunchAgentInfo info;
    info.id = path;
    info.label = entry->value(QStringLiteral("Name"));
    if (info.label.isEmpty())
        info.label = QFileInfo(path).fileName();
    const QString program = entry->program();
    info.program = program.isEmpty() ? LaunchAgentInfo::noProgram() : program;
    info.runAtLoad = entry->value(QStringLiteral("X-GNOME-Autostart-enabled")) != QLatin1String("false");
    return info;
}

} // namespace

std::optional<LaunchAgentInfo> readLaunchAgent(const QString& path)
{
    std::optional<LaunchAgentInfo> info;
    if (path.endsWith(QLatin1String(".service")))
        info = readUnit(path);
    else if (path.endsWith(QLatin1String(".desktop")))
        info = readAutostart(path);
    if (info)
        info->broken = info->program == LaunchAgentInfo::noProgram() || !programExists(info->program);
    return info;
}

QList<LaunchAgentInfo> readLaunchAgents(const QStringList& folders)
{
    QList<LaunchAgentInfo> agents;
    std::vector<std::byte> buffer(directoryBufferSize);
    const QStringList patterns = {QStringLiteral("*.service"), QStringLiteral("*.desktop")};
    for (const QString& folder : folders) {
        for (const FolderEntry& file : listFolderEntries(folder, buffer, FinalLink::followed, patterns)) {
            if (file.type != EntryType::regular)
                continue;
            if (std::optional<LaunchAgentInfo> info = readLaunchAgent(file.path))
                agents.append(std::move(*info));
        }
    }
    return agents;
}
