#include "removal/ActivityJournal.h"

#include "common/AtomicFile.h"
#include "common/JsonText.h"
#include "platform/FileLock.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QString kindName(ActivityJournal::Line::Kind kind)
{
    switch (kind) {
    case ActivityJournal::Line::Kind::pending: return QStringLiteral("pending");
    case ActivityJournal::Line::Kind::entry: return QStringLiteral("entry");
    case ActivityJournal::Line::Kind::dropped: return QStringLiteral("dropped");
    }
    Q_UNREACHABLE();
}

std::optional<ActivityJournal::Line::Kind> parseKind(const QString& text)
{
    using Kind = ActivityJournal::Line::Kind;
    for (const Kind kind : {Kind::pending, Kind::entry, Kind::dropped})
        if (text == kindName(kind))
            return kind;
    return std::nullopt;
}

QString couldNotRecord(const QString& path, const QString& reason)
{
    return QStringLiteral("Couldn’t write to %1 — %2.").arg(path, reason);
}

} // namespace

ActivityJournal::ActivityJournal(QString folder)
    : m_folder(std::move(folder))
{
}

QString ActivityJournal::path() const
{
    return m_folder + QStringLiteral("/audit-journal.jsonl");
}

QString ActivityJournal::lockPath() const
{
    return m_folder + QStringLiteral("/audit.lock");
}

std::optional<QString> ActivityJournal::appendPending(const AuditEntry& move) const
{
    return append({Line::Kind::pending, move, ProcessIdentity::current()});
}

std::optional<QString> ActivityJournal::appendEntry(const AuditEntry& entry) const
{
    return append({Line::Kind::entry, entry, ProcessIdentity::current()});
}

std::optional<QString> ActivityJournal::appendDropped(const QUuid& id) const
{
    AuditEntry only;
    only.id = id;
    return append({Line::Kind::dropped, only, ProcessIdentity::current()});
}

std::optional<QString> ActivityJournal::append(const Line& line) const
{
    const auto lock = FileLock::acquire(lockPath(), FileLock::Mode::shared);
    if (!lock)
        return couldNotRecord(lockPath(), qt_error_string(errno));
    QFile file(path());
    // One unbuffered write per line: appends from several processes never interleave within a line.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered))
        return couldNotRecord(path(), file.errorString());
    const QByteArray text = encode(line);
    if (file.write(text) != text.size())
        return couldNotRecord(path(), file.errorString());
    return std::nullopt;
}

ActivityJournal::Contents ActivityJournal::read() const
{
    Contents contents;
    QFile file(path());
    if (!file.open(QIODevice::ReadOnly))
        return contents;
    for (const QByteArray& text : file.readAll().split('\n')) {
        if (text.isEmpty())
            continue;
        if (auto line = decode(text))
            contents.lines.append(std::move(*line));
        else
            ++contents.unreadable;
    }
    return contents;
}

std::optional<QString> ActivityJournal::replace(const QList<Line>& lines) const
{
    if (lines.isEmpty()) {
        QFile file(path());
        if (!file.exists() || file.remove())
            return std::nullopt;
        return couldNotRecord(path(), file.errorString());
    }
    QByteArray text;
    for (const Line& line : lines)
        text += encode(line);
    return writeFileAtomically(path(), text);
}

QByteArray ActivityJournal::encode(const Line& line)
{
    JsonObjectWriter writer;
    writer.add(u"kind", kindName(line.kind));
    if (line.kind == Line::Kind::dropped)
        writer.add(u"id", uuidText(line.entry.id));
    else
        writer.addRaw(u"entry", line.entry.toJson());
    writer.add(u"pid", line.writer.pid).add(u"started", qint64(line.writer.startTicks));
    return writer.finish() + '\n';
}

std::optional<ActivityJournal::Line> ActivityJournal::decode(const QByteArray& text)
{
    const QJsonObject object = QJsonDocument::fromJson(text).object();
    const auto kind = parseKind(object.value(u"kind").toString());
    if (!kind)
        return std::nullopt;
    Line line;
    line.kind = *kind;
    line.writer = {object.value(u"pid").toInteger(), quint64(object.value(u"started").toInteger())};
    if (*kind == Line::Kind::dropped) {
        line.entry.id = QUuid::fromString(object.value(u"id").toString());
        if (line.entry.id.isNull())
            return std::nullopt;
        return line;
    }
    auto entry = AuditEntry::fromJson(object.value(u"entry").toObject());
    if (!entry)
        return std::nullopt;
    line.entry = std::move(*entry);
    return line;
}
