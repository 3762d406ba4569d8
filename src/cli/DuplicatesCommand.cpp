#include "cli/Commands.h"
#include "cli/VaultOutput.h"

#include "common/ByteCount.h"
#include "common/JsonText.h"
#include "common/StoragePaths.h"
#include "duplicates/DuplicateRules.h"
#include "duplicates/DuplicateScan.h"
#include "duplicates/DuplicateTexts.h"
#include "platform/Terminal.h"
#include "removal/AuditLog.h"
#include "removal/Trasher.h"

#include <QEventLoop>
#include <QFileInfo>

namespace {

struct DuplicatesRequest {
    QStringList roots;
    std::uint64_t minimumSize = 4096;
    bool json = false;
    bool moveTicked = false;
};

// The request, or a sentence saying what is wrong with the command line.
std::variant<DuplicatesRequest, QString> parseArguments(QStringList arguments)
{
    DuplicatesRequest request;
    request.json = takeFlag(arguments, QStringLiteral("--json"));
    request.moveTicked = takeFlag(arguments, QStringLiteral("--move-ticked"));
    if (const std::optional<QString> value = takeValue(arguments, QStringLiteral("--min-size"))) {
        bool ok = false;
        request.minimumSize = value->toULongLong(&ok);
        if (!ok)
            return QStringLiteral("--min-size needs a whole number of bytes, such as --min-size 4096.");
    }
    const Operands left = operands(arguments);
    if (left.unknownOption)
        return QStringLiteral("unknown option “%1” — the options are --min-size N, --move-ticked and --json.")
            .arg(*left.unknownOption);
    for (const QString& root : left.names) {
        if (!QFileInfo(root).isDir())
            return QStringLiteral("“%1” is not a folder — name existing folders to look in.").arg(root);
        request.roots.append(QFileInfo(root).absoluteFilePath());
    }
    if (request.roots.isEmpty())
        request.roots = DuplicateScan::defaultRoots();
    if (request.roots.isEmpty())
        return QStringLiteral("none of the usual folders (Documents, Pictures, Music, Videos, Downloads, Desktop) "
                              "exists — name the folders to look in.");
    return request;
}

QString progressLine(const ScanTelemetry& telemetry)
{
    QString line = QStringLiteral("%1 · %2 files · %3")
                       .arg(duplicateStageLabel(telemetry.stage))
                       .arg(telemetry.filesIndexed)
                       .arg(formatBytes(telemetry.bytesIndexed));
    if (telemetry.stage != DuplicateStage::inventory)
        line += QStringLiteral(" · %1 candidates · %2 read")
                    .arg(telemetry.candidates)
                    .arg(formatBytes(telemetry.bytesRead));
    return line;
}

// The keeper first, then the other copies in the set's order.
QList<const DuplicateFile*> keeperFirst(const DuplicateGroup& group)
{
    QList<const DuplicateFile*> members;
    for (const DuplicateFile& member : group.members)
        members.insert(member.id == group.keeperID ? 0 : members.size(), &member);
    return members;
}

QString memberMark(const DuplicateGroup& group, const DuplicateFile& member)
{
    if (member.id == group.keeperID)
        return QStringLiteral("keep");
    return group.selected.contains(member.id) ? QStringLiteral("[x] ") : QStringLiteral("[ ] ");
}

void printSets(const DuplicateScan& scan, QTextStream& out)
{
    const QList<DuplicateGroup>& groups = scan.groups();
    std::int64_t total = 0;
    for (qsizetype i = 0; i < groups.size(); ++i) {
        const DuplicateGroup& group = groups[i];
        total += group.reclaimable();
        out << QStringLiteral("Set %1 · %2 copies of %3 · frees %4\n")
                   .arg(i + 1)
                   .arg(group.members.size())
                   .arg(formatBytes(group.size), formatBytes(group.reclaimable()));
        for (const DuplicateFile* file : keeperFirst(group)) {
            const DuplicateFile& member = *file;
            QString line = QStringLiteral("  %1  %2").arg(memberMark(group, member), member.path);
            if (const auto reason = DuplicateRules::blockReason(member))
                line += QStringLiteral("  — %1").arg(*reason);
            else if (const auto note = DuplicateRules::reclaimNote(member); note && member.id != group.keeperID)
                line += QStringLiteral("  — %1").arg(*note);
            out << line << '\n';
            for (const QString& name : member.otherNames)
                out << QStringLiteral("        also named %1\n").arg(name);
        }
        out << '\n';
    }
    if (groups.isEmpty())
        out << "No duplicates found.\n";
    else
        out << QStringLiteral("%1 %2 · %3 can be freed. %4\n")
                   .arg(groups.size())
                   .arg(groups.size() == 1 ? QStringLiteral("set") : QStringLiteral("sets"))
                   .arg(formatBytes(total), DuplicateTexts::tickInstruction());
    if (!scan.notScanned().isEmpty())
        out << scan.notScanned() << '\n';
}

// One set, appended straight to `out`: a scan can report tens of thousands of sets, and building each
// member as an object of its own costs more than the scan's last stage.
void appendSetJson(QByteArray& out, const DuplicateGroup& group)
{
    out += "{\"size\":";
    out += QByteArray::number(qint64(group.size));
    out += ",\"contentHash\":";
    appendJsonString(out, group.contentHash.hex());
    out += ",\"reclaimable\":";
    out += QByteArray::number(qint64(group.reclaimable()));
    out += ",\"members\":[";
    bool firstMember = true;
    for (const DuplicateFile* file : keeperFirst(group)) {
        const DuplicateFile& member = *file;
        out += firstMember ? "\n  {\"path\":" : ",\n  {\"path\":";
        firstMember = false;
        appendJsonString(out, member.path);
        out += member.id == group.keeperID ? ",\"keeper\":true" : ",\"keeper\":false";
        out += group.selected.contains(member.id) ? ",\"selected\":true" : ",\"selected\":false";
        out += ",\"size\":";
        out += QByteArray::number(qint64(member.size));
        out += ",\"reclaimable\":";
        out += QByteArray::number(qint64(member.reclaimable));
        if (const auto reason = DuplicateRules::blockReason(member)) {
            out += ",\"blockReason\":";
            appendJsonString(out, *reason);
        }
        out += ",\"otherNames\":[";
        for (qsizetype i = 0; i < member.otherNames.size(); ++i) {
            if (i > 0)
                out += ',';
            appendJsonString(out, member.otherNames[i]);
        }
        out += "]}";
    }
    out += "\n]}";
}

// Written set by set, as the UTF-8 it is built in, so a scan with many sets never holds its whole report
// in memory twice.
void printJson(const DuplicateScan& scan, QTextStream& out)
{
    QList<QByteArray> roots;
    for (const QString& root : scan.roots())
        roots.append(jsonString(root));
    std::int64_t total = 0;
    for (const DuplicateGroup& group : scan.groups())
        total += group.reclaimable();
    const EngineStats& engine = scan.engineStats();
    const QByteArray stats = JsonObjectWriter()
                                 .add(u"filesIndexed", qint64(scan.inventoryStats().filesIndexed))
                                 .add(u"candidatesAfterSize", qint64(engine.candidatesAfterSize))
                                 .add(u"candidatesAfterPrehash", qint64(engine.candidatesAfterPrehash))
                                 .add(u"prehashBytesRead", qint64(engine.prehashBytesRead))
                                 .add(u"verifyBytesRead", qint64(engine.verifyBytesRead))
                                 .add(u"prunedByCache", qint64(engine.prunedByCache))
                                 .add(u"unreadable", qint64(engine.unreadable))
                                 .add(u"changedDuringScan", qint64(engine.changedDuringScan))
                                 .add(u"groupsConfirmed", qint64(engine.groupsConfirmed))
                                 .finish();
    QByteArray text = JsonObjectWriter()
                          .addRaw(u"roots", jsonArray(roots).trimmed())
                          .add(u"minimumSize", qint64(scan.minimumSize()))
                          .add(u"reclaimableBytes", qint64(total))
                          .add(u"notScanned", scan.notScanned())
                          .addRaw(u"stats", stats)
                          .finish();
    text.chop(1); // the closing brace comes after the sets
    text += ",\"sets\":[";
    out.flush();
    QIODevice& device = *out.device();
    bool first = true;
    for (const DuplicateGroup& group : scan.groups()) {
        text += first ? "\n" : ",\n";
        first = false;
        appendSetJson(text, group);
        if (text.size() >= 64 * 1024) {
            device.write(text);
            text.clear();
        }
    }
    text += "\n]}\n";
    device.write(text);
}

// Moves exactly the copies the scan ticked into the vault and prints what happened to each.
int moveTicked(const DuplicateScan& scan, bool json, CommandContext& context)
{
    if (!json)
        printSets(scan, context.out);
    AuditLog log(StoragePaths::dataFolder());
    const Trasher trasher;
    DuplicateVaultController vault(StoragePaths::dataFolder(), log, trasher);
    vault.load();
    runVaultOperation(vault, [&] { return vault.moveTicked(scan.groups()); });
    const VaultMoveResult result = vault.lastMove().value_or(VaultMoveResult{});
    if (json) {
        context.out << QString::fromUtf8(moveResultJson(result)) << '\n';
    } else {
        context.out << '\n';
        printMoveResult(result, context.out);
    }
    return vaultExitStatus(!result.failed.isEmpty() || result.abortedBecause, vault, log, context.err);
}

} // namespace

int runDuplicatesCommand(CommandContext& context)
{
    const auto parsed = parseArguments(context.arguments);
    if (const QString* problem = std::get_if<QString>(&parsed)) {
        context.err << QStringLiteral("velloru duplicates: %1\n").arg(*problem);
        return 2;
    }
    const auto& request = std::get<DuplicatesRequest>(parsed);

    DuplicateScan scan;
    scan.setRoots(request.roots);
    scan.setMinimumSize(request.minimumSize);
    QEventLoop loop;
    QObject::connect(&scan, &DuplicateScan::phaseChanged, &loop, [&](DuplicateScan::Phase phase) {
        if (phase != DuplicateScan::Phase::scanning)
            loop.quit();
    });
    const bool showProgress = standardErrorIsTerminal();
    if (showProgress) {
        QObject::connect(&scan, &DuplicateScan::telemetryChanged, &loop, [&] {
            context.err << "\r\033[K" << progressLine(scan.telemetry());
            context.err.flush();
        });
    }
    scan.start();
    loop.exec();
    if (showProgress)
        context.err << "\r\033[K";
    context.err.flush();

    if (request.moveTicked)
        return moveTicked(scan, request.json, context);
    if (request.json)
        printJson(scan, context.out);
    else
        printSets(scan, context.out);
    return 0;
}
