#include "apps/InstalledApp.h"

#include "common/JsonText.h"

QString appSourceName(AppSource source)
{
    switch (source) {
    case AppSource::system: return QStringLiteral("system");
    case AppSource::appStore: return QStringLiteral("appStore");
    case AppSource::developerID: return QStringLiteral("developerID");
    case AppSource::unsignedApp: break;
    }
    return QStringLiteral("unsigned");
}

QByteArray installedAppJson(const InstalledApp& app)
{
    JsonObjectWriter object;
    object.add(u"id", app.id).add(u"name", app.name);
    object.addRaw(u"bundleID", app.bundleID ? jsonString(*app.bundleID) : QByteArray("null"));
    object.addRaw(u"vendor", app.vendor ? jsonString(*app.vendor) : QByteArray("null"));
    QList<QByteArray> groups;
    for (const QString& group : app.appGroups)
        groups.append(jsonString(group));
    return object.add(u"source", appSourceName(app.source))
        .addRaw(u"appGroups", groups.isEmpty() ? QByteArray("[]") : jsonArray(groups).trimmed())
        .add(u"isProtected", app.isProtected)
        .add(u"size", app.size)
        .finish();
}
