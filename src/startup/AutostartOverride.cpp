#include "startup/AutostartOverride.h"

#include "common/AtomicFile.h"

#include <QFile>
#include <QList>

namespace {

const QByteArray group = "[Desktop Entry]";

// True for the lines that switch an entry off.
bool isOffLine(const QByteArray& line)
{
    const QByteArray trimmed = line.trimmed();
    const qsizetype equals = trimmed.indexOf('=');
    if (equals <= 0)
        return false;
    const QByteArray key = trimmed.left(equals).trimmed();
    const QByteArray value = trimmed.mid(equals + 1).trimmed();
    return key == "Hidden" || (key == "X-GNOME-Autostart-enabled" && value == "false");
}

// The lines of `content` with the keys that switch the main group off taken out.
QList<QByteArray> withoutOffKeys(const QByteArray& content)
{
    QList<QByteArray> kept;
    bool inGroup = false;
    for (const QByteArray& line : content.split('\n')) {
        if (line.trimmed().startsWith('['))
            inGroup = line.trimmed() == group;
        if (inGroup && isOffLine(line))
            continue;
        kept.append(line);
    }
    while (!kept.isEmpty() && kept.last().trimmed().isEmpty())
        kept.removeLast();
    return kept;
}

} // namespace

bool AutostartOverride::switchesOff(const QByteArray& content)
{
    bool inGroup = false;
    for (const QByteArray& line : content.split('\n')) {
        if (line.trimmed().startsWith('['))
            inGroup = line.trimmed() == group;
        const QByteArray trimmed = line.trimmed();
        if (inGroup && (trimmed == "Hidden=true" || trimmed == "X-GNOME-Autostart-enabled=false"))
            return true;
    }
    return false;
}

std::optional<QString> AutostartOverride::apply(const QString& userFolder, const QString& fileName, bool on)
{
    const QString path = userFolder + QLatin1Char('/') + fileName;
    QFile file(path);
    const bool exists = file.exists();
    QByteArray content;
    if (exists) {
        if (!file.open(QIODevice::ReadOnly))
            return QStringLiteral("%1 can’t be read — %2.").arg(path, file.errorString());
        content = file.readAll();
        file.close();
    }
    if (on && !exists)
        return std::nullopt;
    if (switchesOff(content) != on)
        return std::nullopt; // already in the state asked for
    QList<QByteArray> lines = withoutOffKeys(content);
    if (on) {
        // An override that held nothing but the switch was Velloru's own; without the switch it is empty.
        if (lines.size() == 1 && lines.first().trimmed() == group) {
            if (!file.remove())
                return QStringLiteral("%1 can’t be removed — %2.").arg(path, file.errorString());
            return std::nullopt;
        }
    } else {
        const qsizetype header = lines.indexOf(group);
        if (header < 0)
            lines = QList<QByteArray>{group, "Hidden=true"} + lines;
        else
            lines.insert(header + 1, "Hidden=true");
    }
    return writeFileAtomically(path, lines.join('\n') + '\n');
}
