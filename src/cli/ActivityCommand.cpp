#include "cli/Commands.h"
#include "cli/TextTable.h"

#include "common/ByteCount.h"
#include "common/JsonText.h"
#include "common/StoragePaths.h"
#include "removal/AuditLog.h"

#include <QLocale>

namespace {

void printTable(const AuditLog& log, QTextStream& out)
{
    const auto& entries = log.entries();
    if (entries.isEmpty()) {
        out << "The activity log is empty: Velloru has not moved anything yet.\n";
    } else {
        TextTable table({QStringLiteral("Date"), QStringLiteral("Feature"), QStringLiteral("Outcome"),
                            QStringLiteral("Size"), QStringLiteral("Item"), QStringLiteral("Entry")},
            {false, false, false, true, false, false});
        for (auto it = entries.crbegin(); it != entries.crend(); ++it) {
            table.addRow(
                {QLocale::c().toString(it->date.toLocalTime(), QStringLiteral("yyyy-MM-dd HH:mm:ss")), it->feature,
                    it->outcome, it->subjectKind == AuditSubject::file ? formatBytes(it->size) : QString(), it->path,
                    // The start of the id is enough for "velloru put-back".
                    uuidText(it->id).left(8)});
        }
        table.print(out);
        out << '\n';
    }
    out << QStringLiteral("%1 %2 · cleaned over all runs: %3\n")
               .arg(entries.size())
               .arg(entries.size() == 1 ? QStringLiteral("entry") : QStringLiteral("entries"))
               .arg(formatBytes(log.lifetimeCleaned()));
}

void printJson(const AuditLog& log, QTextStream& out)
{
    QList<QByteArray> entries;
    for (const AuditEntry& entry : log.entries())
        entries.append(entry.toJson());
    const QByteArray json = JsonObjectWriter()
                                .add(u"lifetimeCleaned", log.lifetimeCleaned())
                                .addRaw(u"entries", jsonArray(entries).trimmed())
                                .finish();
    out << QString::fromUtf8(json) << '\n';
}

} // namespace

int runActivityCommand(CommandContext& context)
{
    const bool json = takeFlag(context.arguments, QStringLiteral("--json"));
    if (const auto problem = leftoverArgument(context.arguments, QStringLiteral("the only option is --json"))) {
        context.err << QStringLiteral("velloru activity: %1\n").arg(*problem);
        return 2;
    }
    const AuditLog log(StoragePaths::dataFolder());
    if (json)
        printJson(log, context.out);
    else
        printTable(log, context.out);
    return 0;
}
