#include "processes/RunningProcessJson.h"

#include "common/JsonText.h"
#include "processes/PriorityBand.h"

QByteArray runningProcessJson(const RunningProcess& process)
{
    JsonObjectWriter json;
    json.add(u"id", qint64(process.id))
        .add(u"name", process.name)
        .add(u"path", process.path)
        .addRaw(u"bundleID", process.bundleID ? jsonString(*process.bundleID) : QByteArray("null"))
        .add(u"memory", process.memory)
        .add(u"cpu", process.cpu)
        .add(u"uid", qint64(process.uid))
        .add(u"nice", qint64(process.nice))
        .add(u"isApp", process.isApp)
        .add(u"isRegularApp", process.isRegularApp)
        .add(u"isResponding", process.isResponding)
        .add(u"startTicks", qint64(process.startTicks))
        .add(u"parentID", qint64(process.parentID))
        .add(u"appName", process.appName)
        .add(u"user", process.user)
        .add(u"isSystem", process.isSystem)
        .add(u"figuresKnown", process.figuresKnown)
        .add(u"priority", PriorityBands::rawValue(PriorityBands::bandOf(process.nice)));
    return json.finish();
}
