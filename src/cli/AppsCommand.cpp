#include "cli/Commands.h"
#include "cli/TextTable.h"

#include "apps/AppCollector.h"
#include "common/JsonText.h"

int runAppsCommand(CommandContext& context)
{
    const bool json = takeFlag(context.arguments, QStringLiteral("--json"));
    if (const auto problem = leftoverArgument(context.arguments, QStringLiteral("the only option is --json"))) {
        context.err << QStringLiteral("velloru apps: %1\n").arg(*problem);
        return 2;
    }
    QList<InstalledApp> apps = collectInstalledApps(AppSources::forThisSystem());
    std::sort(apps.begin(), apps.end(),
        [](const InstalledApp& a, const InstalledApp& b) { return a.name.localeAwareCompare(b.name) < 0; });
    if (json) {
        QList<QByteArray> elements;
        for (const InstalledApp& app : apps)
            elements.append(installedAppJson(app));
        context.out << QString::fromUtf8(elements.isEmpty() ? QByteArray("[]") : jsonArray(elements).trimmed()) << '\n';
        return 0;
    }
    TextTable table({QStringLiteral("Name"), QStringLiteral("Identifier"), QStringLiteral("Source"),
        QStringLiteral("Program"), QStringLiteral("Desktop entry")});
    for (const InstalledApp& app : apps)
        table.addRow(
            {app.name, app.bundleID.value_or(QString()), appSourceName(app.source), app.executableName, app.id});
    table.print(context.out);
    context.out << QStringLiteral("%1 apps.\n").arg(apps.size());
    return 0;
}
