#include "JsonContract.h"
#include "ProgramHome.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QJsonDocument>

#include <algorithm>

#include <unistd.h>

// Scripts read these keys: every command's --json keeps its keys and their types. Each contract below is
// checked against the real program's output on a fixture home where every array has elements.
namespace {

// A home with something for every command to report.
class ContractHome : public ProgramHome {
public:
    ContractHome()
    {
        tree().write(QStringLiteral("share/applications/vlc.desktop"),
            "[Desktop Entry]\nType=Application\nName=VLC\nExec=vlc %U\n");
        tree().write(QStringLiteral("share/applications/org.mozilla.firefox.desktop"),
            "[Desktop Entry]\nType=Application\nName=Firefox\nExec=firefox %u\n");
        tree().write(QStringLiteral("home/.cache/vlc/art"), QByteArray(3000, 'x'));
        tree().write(QStringLiteral("home/.cache/fontconfig/f"), QByteArray(2000, 'x'));
        tree().write(QStringLiteral("home/.local/state/sync.log"), QByteArray(100, 'x'));
        QFile::link(QStringLiteral("/nowhere/at/all"), path(QStringLiteral("dangling")));
        // Two copies and a second name of one of them, in a folder with a subfolder.
        tree().write(QStringLiteral("home/Documents/report.pdf"), QByteArray(8192, 'r'));
        tree().write(QStringLiteral("home/Documents/old/report copy.pdf"), QByteArray(8192, 'r'));
        ::link(QFile::encodeName(path(QStringLiteral("Documents/report.pdf"))).constData(),
            QFile::encodeName(path(QStringLiteral("Documents/old/same report.pdf"))).constData());
    }

    // Runs a command and reads what it printed as JSON.
    QJsonValue json(const QStringList& arguments) const
    {
        const CommandRun run = this->run(arguments);
        EXPECT_TRUE(run.status == 0 || run.status == 1) << run.err.toStdString();
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(run.out.toUtf8(), &error);
        EXPECT_EQ(error.error, QJsonParseError::NoError) << run.out.toStdString();
        return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
    }
};

QJsonValue contract(const char* text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text);
    return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
}

// Whether the output holds an example of a key down this path (through arrays, in any of their elements),
// so that the contract was really checked against one.
bool reaches(const QJsonValue& value, const QStringList& keys)
{
    if (keys.isEmpty())
        return true;
    if (value.isArray()) {
        const QJsonArray elements = value.toArray();
        return std::any_of(
            elements.begin(), elements.end(), [&](const QJsonValue& element) { return reaches(element, keys); });
    }
    return value.toObject().contains(keys.first()) && reaches(value.toObject().value(keys.first()), keys.mid(1));
}

const char* const trashResultContract = R"({"freed": "integer",
    "moved": [{"path": "string", "size": "integer", "trashPath": "string"}],
    "failed": [{"path": "string", "reason": "string"}]})";

} // namespace

TEST(JsonContract, EveryCommandKeepsItsKeysAndTheirTypes)
{
    ContractHome home;

    const QJsonValue review = home.json({QStringLiteral("scan"), QStringLiteral("--json")});
    EXPECT_TRUE(reaches(review, {"groups", "items", "ticked"}));
    EXPECT_EQ(contractBreaches(review, contract(R"({
        "groups": [{"title": "string", "systemImage": "string", "size": "integer",
            "items": [{"path": "string", "size": "integer", "risk": "string", "detail": "string",
                "ticked": "boolean"}]}],
        "total": "integer", "tickedCount": "integer", "tickedSize": "integer"})")),
        QStringList());

    const QJsonValue apps = home.json({QStringLiteral("apps"), QStringLiteral("--json")});
    EXPECT_TRUE(reaches(apps, {"size"}));
    EXPECT_EQ(contractBreaches(apps, contract(R"([{"id": "string", "name": "string", "bundleID": "string|null",
        "vendor": "string|null", "source": "string", "appGroups": ["string"], "isProtected": "boolean",
        "size": "integer"}])")),
        QStringList());

    const QJsonValue duplicates
        = home.json({QStringLiteral("duplicates"), home.path(QStringLiteral("Documents")), QStringLiteral("--json")});
    EXPECT_TRUE(reaches(duplicates, {"sets", "members", "otherNames"}));
    EXPECT_EQ(contractBreaches(duplicates, contract(R"({"roots": ["string"], "minimumSize": "integer",
        "reclaimableBytes": "integer", "notScanned": "string",
        "stats": {"filesIndexed": "integer", "candidatesAfterSize": "integer", "candidatesAfterPrehash": "integer",
            "prehashBytesRead": "integer", "verifyBytesRead": "integer", "prunedByCache": "integer",
            "unreadable": "integer", "changedDuringScan": "integer", "groupsConfirmed": "integer"},
        "sets": [{"size": "integer", "contentHash": "string", "reclaimable": "integer",
            "members": [{"path": "string", "keeper": "boolean", "selected": "boolean", "size": "integer",
                "reclaimable": "integer", "blockReason?": "string", "otherNames": ["string"]}]}]})")),
        QStringList());

    const QJsonValue usage = home.json({QStringLiteral("usage"), home.path(), QStringLiteral("--depth"),
        QStringLiteral("2"), QStringLiteral("--json")});
    EXPECT_TRUE(reaches(usage, {"items", "items", "fileCount"}));
    EXPECT_EQ(contractBreaches(usage, contract(R"({"path": "string", "total": "integer",
        "rootFileBytes": "integer", "rootFileCount": "integer", "unreadableFolders": ["string"],
        "items": [{"kind": "string", "name": "string", "path": "string", "exactPath": "boolean", "bytes": "integer",
            "share": "number", "fileCount": "integer",
            "items?": [{"kind": "string", "name": "string", "path": "string", "exactPath": "boolean",
                "bytes": "integer", "share": "number", "fileCount": "integer"}]}]})")),
        QStringList());

    const QJsonValue trashed = home.json({QStringLiteral("trash"), home.path(QStringLiteral("Documents/old")),
        home.path(QStringLiteral("not there")), QStringLiteral("--json")});
    EXPECT_TRUE(reaches(trashed, {"moved", "trashPath"}) && reaches(trashed, {"failed", "reason"}));
    EXPECT_EQ(contractBreaches(trashed, contract(trashResultContract)), QStringList());

    const QJsonValue summary = home.json({QStringLiteral("trash-summary"), QStringLiteral("--json")});
    EXPECT_TRUE(reaches(summary, {"locations"}));
    EXPECT_EQ(contractBreaches(summary, contract(R"({"bytes": "integer", "items": "integer",
        "locations": ["string"]})")),
        QStringList());

    const QJsonValue cleaned = home.json({QStringLiteral("scan"), QStringLiteral("--clean"), QStringLiteral("--json")});
    EXPECT_TRUE(reaches(cleaned, {"moved", "trashPath"}));
    EXPECT_EQ(contractBreaches(cleaned, contract(trashResultContract)), QStringList());

    const QJsonValue processes
        = home.json({QStringLiteral("processes"), QStringLiteral("--all"), QStringLiteral("--json")});
    EXPECT_TRUE(reaches(processes, {"processes", "priority"}));
    EXPECT_EQ(contractBreaches(processes, contract(R"({"memoryFigure": "string", "systemProcessesHidden": "boolean",
        "processes": [{"id": "integer", "name": "string", "path": "string", "bundleID": "string|null",
            "memory": "integer", "cpu": "number", "uid": "integer", "nice": "integer", "isApp": "boolean",
            "isRegularApp": "boolean", "isResponding": "boolean", "startTicks": "integer", "parentID": "integer",
            "appName": "string", "user": "string", "isSystem": "boolean", "figuresKnown": "boolean",
            "priority": "string"}]})")),
        QStringList());

    const QJsonValue memory = home.json({QStringLiteral("memory"), QStringLiteral("--json")});
    EXPECT_TRUE(reaches(memory, {"largest", "processes"}));
    EXPECT_EQ(contractBreaches(memory, contract(R"({"total": "integer", "used": "integer", "available": "integer",
        "cached": "integer", "swapTotal": "integer", "swapUsed": "integer", "pressure": "string",
        "pressureFromStalls": "boolean", "stallSomeAvg10?": "number", "stallFullAvg10?": "number",
        "largest": [{"name": "string", "isApp": "boolean", "memory": "integer", "processes": "integer"}]})")),
        QStringList());

    // The trash above wrote one moved entry (a name that does not exist is a slip, not a failed removal),
    // the clean two moved ones.
    const QJsonValue activity = home.json({QStringLiteral("activity"), QStringLiteral("--json")});
    EXPECT_EQ(activity[QStringLiteral("entries")].toArray().size(), 3);
    EXPECT_EQ(contractBreaches(activity, contract(R"({"lifetimeCleaned": "integer",
        "entries": [{"id": "string", "date": "number", "path": "string", "size": "integer", "feature": "string",
            "outcome": "string", "trashPath?": "string", "subjectKind": "string"}]})")),
        QStringList());
}

TEST(JsonContract, AnInstalledAppHasItsKeysInTheirOrder)
{
    ContractHome home;
    const CommandRun run = home.run({QStringLiteral("apps"), QStringLiteral("--json")});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    const QString first = run.out.section(QLatin1Char('}'), 0, 0);
    qsizetype at = 0;
    for (const char* key : {"id", "name", "bundleID", "vendor", "source", "appGroups", "isProtected", "size"}) {
        const qsizetype found = first.indexOf(QStringLiteral("\"%1\":").arg(QString::fromLatin1(key)), at);
        EXPECT_GE(found, at) << key << " is missing or out of order in " << first.toStdString();
        at = std::max(at, found);
    }
}
