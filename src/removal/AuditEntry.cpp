#include "removal/AuditEntry.h"

#include "common/JsonText.h"
#include "common/ReferenceDate.h"
#include "removal/ItemSize.h"

#include <cmath>

namespace {

QString subjectName(AuditSubject subject)
{
    return subject == AuditSubject::file ? QStringLiteral("file") : QStringLiteral("action");
}

std::optional<AuditSubject> parseSubject(const QString& text)
{
    if (text == QLatin1String("file"))
        return AuditSubject::file;
    if (text == QLatin1String("action"))
        return AuditSubject::action;
    return std::nullopt;
}

} // namespace

QString uuidText(const QUuid& id)
{
    return id.toString(QUuid::WithoutBraces).toUpper();
}

AuditEntry AuditEntry::make(const QString& feature, const QString& path, qint64 size, const QString& outcome)
{
    AuditEntry entry;
    entry.id = QUuid::createUuid();
    entry.date = QDateTime::currentDateTimeUtc();
    entry.path = expandTilde(path);
    entry.size = size;
    entry.feature = feature;
    entry.outcome = outcome;
    entry.subjectKind = AuditSubject::file;
    return entry;
}

QByteArray AuditEntry::toJson() const
{
    JsonObjectWriter writer;
    writer.add(u"id", uuidText(id))
        .add(u"date", ReferenceDate::secondsSinceReference(date))
        .add(u"path", path)
        .add(u"size", size)
        .add(u"feature", feature)
        .add(u"outcome", outcome);
    if (trashPath)
        writer.add(u"trashPath", *trashPath);
    writer.add(u"subjectKind", subjectName(subjectKind));
    return writer.finish();
}

std::optional<AuditEntry> AuditEntry::fromJson(const QJsonObject& object)
{
    const QJsonValue id = object.value(u"id");
    const QJsonValue date = object.value(u"date");
    const QJsonValue path = object.value(u"path");
    const QJsonValue size = object.value(u"size");
    const QJsonValue feature = object.value(u"feature");
    const QJsonValue outcome = object.value(u"outcome");
    const QJsonValue trashPath = object.value(u"trashPath");
    const QJsonValue subject = object.value(u"subjectKind");
    if (!id.isString() || !date.isDouble() || !path.isString() || !size.isDouble() || !feature.isString()
        || !outcome.isString() || !subject.isString() || !(trashPath.isUndefined() || trashPath.isString()))
        return std::nullopt;

    // Values no real entry can have are as unreadable as a wrong type: a size that is not a whole,
    // non-negative byte count, a date outside the years a computer has been or will be recording.
    constexpr double largestExactSize = 9007199254740992.0; // 2^53
    constexpr double earliestDate = -978307200.0;           // 1970
    constexpr double latestDate = 31556995200.0;            // 3001
    const double bytes = size.toDouble();
    const double seconds = date.toDouble();
    if (bytes < 0 || bytes > largestExactSize || std::floor(bytes) != bytes || !(seconds >= earliestDate)
        || !(seconds <= latestDate))
        return std::nullopt;

    AuditEntry entry;
    entry.id = QUuid::fromString(id.toString());
    const auto kind = parseSubject(subject.toString());
    if (entry.id.isNull() || !kind)
        return std::nullopt;
    entry.date = ReferenceDate::fromSecondsSinceReference(date.toDouble());
    entry.path = path.toString();
    entry.size = size.toInteger();
    entry.feature = feature.toString();
    entry.outcome = outcome.toString();
    if (trashPath.isString())
        entry.trashPath = trashPath.toString();
    entry.subjectKind = *kind;
    return entry;
}
