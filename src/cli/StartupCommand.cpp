#include "cli/Commands.h"

#include "cli/TextTable.h"
#include "common/StoragePaths.h"
#include "helper/HelperManager.h"
#include "helper/HelperProtocol.h"
#include "helper/HelperTrash.h"
#include "platform/SystemdHelperService.h"
#include "platform/TrashStore.h"
#include "removal/AuditLog.h"
#include "removal/Trasher.h"
#include "startup/StartupItems.h"
#include "startup/StartupTexts.h"

#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

const QString usage = QStringLiteral("velloru startup: say “list”, or “off”, “on” or “remove” and an item’s id, as "
                                     "“velloru startup list” shows it.\n");

QJsonObject itemJson(const StartupItem& item)
{
    return {{QStringLiteral("id"), item.id}, {QStringLiteral("name"), item.name},
        {QStringLiteral("developer"), item.developer ? QJsonValue(*item.developer) : QJsonValue()},
        {QStringLiteral("detail"), item.detail}, {QStringLiteral("kind"), StartupNames::kindLabel(item.kind)},
        {QStringLiteral("control"), StartupNames::controlName(item.control)},
        {QStringLiteral("removal"), StartupNames::removalName(item.removal)}, {QStringLiteral("enabled"), item.enabled},
        {QStringLiteral("health"), StartupNames::healthName(item.health)},
        {QStringLiteral("systemSettingsDisagrees"), item.systemSettingsDisagrees},
        {QStringLiteral("revealURL"), item.revealURL ? QJsonValue(*item.revealURL) : QJsonValue()},
        {QStringLiteral("program"), item.program}};
}

QString healthNote(const StartupItem& item)
{
    switch (item.health) {
    case StartupHealth::ok: return item.systemSettingsDisagrees ? StartupTexts::disagreesBadge() : QString();
    case StartupHealth::programMissing: return StartupTexts::programMissingBadge();
    case StartupHealth::appInTrash: return StartupTexts::appInTrashBadge();
    }
    return {};
}

void printList(const StartupItems& startup, bool json, QTextStream& out)
{
    if (json) {
        QJsonArray items;
        for (const StartupItem& item : startup.items())
            items.append(itemJson(item));
        out << QJsonDocument(
            QJsonObject{{QStringLiteral("complete"), startup.isComplete()}, {QStringLiteral("items"), items}})
                   .toJson(QJsonDocument::Indented);
        return;
    }
    if (startup.items().isEmpty())
        out << StartupTexts::emptyTitle() << " — " << StartupTexts::emptyText() << '\n';
    TextTable table({QStringLiteral("On"), QStringLiteral("Kind"), QStringLiteral("Name"), QStringLiteral("Id"),
        QStringLiteral("Note")});
    for (const StartupItem& item : startup.items())
        table.addRow({item.enabled ? QStringLiteral("on") : QStringLiteral("off"), StartupNames::kindLabel(item.kind),
            item.name, item.id, healthNote(item)});
    if (!startup.items().isEmpty())
        table.print(out);
    if (!startup.isComplete())
        out << StartupTexts::incompleteTitle() << " — " << StartupTexts::incompleteText() << '\n';
}

void waitForScan(StartupItems& startup)
{
    QEventLoop loop;
    QObject::connect(&startup, &StartupItems::scanned, &loop, &QEventLoop::quit);
    startup.scan();
    loop.exec();
}

StartupOutcome waitFor(const std::function<void(StartupItems::Done)>& start)
{
    std::optional<StartupOutcome> outcome;
    QEventLoop loop;
    start([&](StartupOutcome answer) {
        outcome = answer;
        loop.quit();
    });
    if (!outcome)
        loop.exec();
    return *outcome;
}

} // namespace

int runStartupCommand(CommandContext& context)
{
    const bool json = takeFlag(context.arguments, QStringLiteral("--json"));
    const Operands given = operands(context.arguments);
    const QString action = given.names.value(0);
    const bool listing = action == QLatin1String("list") && given.names.size() == 1;
    const bool changing
        = QStringList{QStringLiteral("off"), QStringLiteral("on"), QStringLiteral("remove")}.contains(action)
        && given.names.size() == 2;
    if (given.unknownOption || !(listing || changing)) {
        context.err << usage;
        return 2;
    }

    AuditLog log(StoragePaths::dataFolder());
    SystemdHelperService service;
    HelperManager helper(HelperProtocol::socketPath());
    helper.refreshState(service);
    HelperTrash helperTrash(
        HelperProtocol::socketPath(), [&helper] { return helper.state() == HelperManager::State::ready; },
        homeTrashPath());
    const Trasher trasher(&helperTrash);
    StartupItems startup(StartupLocations::forThisUser(), helper, trasher, log);
    waitForScan(startup);
    if (listing) {
        printList(startup, json, context.out);
        return 0;
    }

    const QString id = given.names.at(1);
    if (!startup.item(id)) {
        context.err << QStringLiteral("velloru startup: there is no startup item “%1” — run “velloru startup list” to "
                                      "see the ids.\n")
                           .arg(id);
        return 2;
    }
    const StartupOutcome outcome = waitFor([&](StartupItems::Done done) {
        if (action == QLatin1String("remove"))
            startup.remove(id, std::move(done));
        else
            startup.setEnabled(id, action == QLatin1String("on"), std::move(done));
    });
    // The list is read again after every change; the command waits for that so nothing runs on behind it.
    if (startup.isScanning()) {
        QEventLoop loop;
        QObject::connect(&startup, &StartupItems::scanned, &loop, &QEventLoop::quit);
        loop.exec();
    }
    if (json)
        context.out << QJsonDocument(
            QJsonObject{{QStringLiteral("success"), outcome.success}, {QStringLiteral("message"), outcome.message}})
                           .toJson(QJsonDocument::Compact)
                    << '\n';
    else
        context.out << (outcome.success ? QStringLiteral("✓ ") : QStringLiteral("✗ ")) << outcome.message << '\n';
    return outcome.success ? 0 : 1;
}
