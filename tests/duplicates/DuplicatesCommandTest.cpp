#include "DuplicateFixtures.h"
#include "ProgramHome.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

#include <algorithm>

#include <unistd.h>

namespace {

QJsonObject documentOf(const CommandRun& run)
{
    EXPECT_EQ(run.status, 0) << run.err.toStdString();
    return QJsonDocument::fromJson(run.out.toUtf8()).object();
}

// The members of the set that holds a file named `name`.
QJsonArray setHolding(const QJsonObject& document, const QString& name)
{
    for (const QJsonValue& set : document[QStringLiteral("sets")].toArray()) {
        const QJsonArray members = set[QStringLiteral("members")].toArray();
        if (std::any_of(members.begin(), members.end(), [&](const QJsonValue& member) {
                return member[QStringLiteral("path")].toString().endsWith(QLatin1Char('/') + name);
            }))
            return members;
    }
    return {};
}

QStringList pathsWhere(const QJsonArray& members, const char* flag)
{
    QStringList paths;
    for (const QJsonValue& member : members)
        if (member[QLatin1String(flag)].toBool())
            paths.append(member[QStringLiteral("path")].toString());
    paths.sort();
    return paths;
}

} // namespace

TEST(DuplicatesCommand, PrintsEachSetWithTheKeeperFirstAndTheTickedCopies)
{
    FixtureTree tree;
    const QByteArray report = patternBytes(6000, 1);
    tree.write(QStringLiteral("Downloads/report.pdf"), report);
    const QString kept = tree.write(QStringLiteral("Documents/report.pdf"), report);
    ASSERT_EQ(
        ::link(QFile::encodeName(kept), QFile::encodeName(tree.path(QStringLiteral("Documents/report-link.pdf")))), 0);
    tree.write(QStringLiteral("App.app/Contents/report.pdf"), report);
    tree.write(QStringLiteral("small-a"), patternBytes(100, 2));
    tree.write(QStringLiteral("small-b"), patternBytes(100, 2));

    const CommandRun run = runVelloru({QStringLiteral("duplicates"), tree.path()});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    const QStringList lines = run.out.split(QLatin1Char('\n'));
    ASSERT_GE(lines.size(), 5);
    EXPECT_EQ(lines[0], QStringLiteral("Set 1 · 2 copies of 6.0 kB · frees 6.0 kB"));
    // The two names of the kept file: whichever the folder listing gave first is the one shown.
    ASSERT_TRUE(lines[1].startsWith(QStringLiteral("  keep  ")));
    ASSERT_TRUE(lines[2].startsWith(QStringLiteral("        also named ")));
    QStringList names = {lines[1].mid(8), lines[2].mid(19)};
    names.sort();
    EXPECT_EQ(names, QStringList({tree.path(QStringLiteral("Documents/report-link.pdf")), kept}));
    EXPECT_EQ(lines[3], QStringLiteral("  [x]   %1").arg(tree.path(QStringLiteral("Downloads/report.pdf"))));
    EXPECT_TRUE(run.out.contains(QStringLiteral("1 set · 6.0 kB can be freed.")));
    EXPECT_TRUE(run.out.contains(QStringLiteral("1 app or library bundle was measured whole rather than opened up.")));
    EXPECT_FALSE(run.out.contains(QStringLiteral("small-a"))) << "below the default minimum of 4,096 bytes";

    const CommandRun json = runVelloru({QStringLiteral("duplicates"), tree.path(), QStringLiteral("--min-size"),
        QStringLiteral("1"), QStringLiteral("--json")});
    ASSERT_EQ(json.status, 0);
    const QJsonObject document = QJsonDocument::fromJson(json.out.toUtf8()).object();
    const QJsonArray sets = document[QStringLiteral("sets")].toArray();
    ASSERT_EQ(sets.size(), 2);
    EXPECT_EQ(document[QStringLiteral("minimumSize")].toInt(), 1);
    const QJsonObject first = sets[0].toObject();
    EXPECT_EQ(first[QStringLiteral("contentHash")].toString().size(), 32);
    EXPECT_TRUE(first[QStringLiteral("members")].toArray()[0].toObject()[QStringLiteral("keeper")].toBool());
}

TEST(DuplicatesCommand, ANameThatIsNotUtf8IsLeftOutAndNeverTakenForTheFileNamedLikeIt)
{
    // "B\xff" is a copy of A; "B\xef\xbf\xbd" is a different file whose name is what "B\xff" decodes to.
    FixtureTree tree;
    const QByteArray copy = patternBytes(6000, 1);
    const QString a = tree.write(QStringLiteral("A"), copy);
    const QByteArray root = QFile::encodeName(tree.path());
    ASSERT_TRUE(writeFileNamedBytes(root + "/B\xff", copy));
    ASSERT_TRUE(writeFileNamedBytes(root + "/B\xef\xbf\xbd", patternBytes(6000, 2)));

    const CommandRun run = runVelloru({QStringLiteral("duplicates"), QStringLiteral("--json"), tree.path()});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    QJsonParseError error;
    const QJsonObject document = QJsonDocument::fromJson(run.out.toUtf8(), &error).object();
    ASSERT_EQ(error.error, QJsonParseError::NoError) << run.out.toStdString();
    EXPECT_EQ(document[QStringLiteral("sets")].toArray().size(), 0) << run.out.toStdString();
    EXPECT_EQ(document[QStringLiteral("notScanned")].toString(),
        QStringLiteral("1 file has a name that isn’t valid UTF-8 and was left out — rename it to include it."));
    EXPECT_FALSE(run.out.contains(QChar(0xFFFD))) << "no name stands in for a bad byte";
    EXPECT_EQ(readWholeFile(a), copy);
}

TEST(DuplicatesCommand, BadArgumentsGetASentenceAndStatusTwo)
{
    FixtureTree tree;
    const struct {
        QStringList arguments;
        QString message;
    } cases[] = {
        {{QStringLiteral("--min-size"), QStringLiteral("lots")},
            QStringLiteral("--min-size needs a whole number of bytes")},
        {{QStringLiteral("--min-size")}, QStringLiteral("--min-size needs a whole number of bytes")},
        {{QStringLiteral("--fast")}, QStringLiteral("unknown option “--fast”")},
        {{tree.path(QStringLiteral("missing"))}, QStringLiteral("is not a folder — name existing folders to look in.")},
        {{}, QStringLiteral("none of the usual folders")},
    };
    for (const auto& [arguments, message] : cases) {
        const CommandRun run = runVelloru(
            QStringList{QStringLiteral("duplicates")} + arguments, {{QStringLiteral("HOME"), tree.path()}});
        EXPECT_EQ(run.status, 2) << arguments.join(' ').toStdString();
        EXPECT_TRUE(run.err.contains(message)) << run.err.toStdString();
        EXPECT_TRUE(run.out.isEmpty());
    }
}

TEST(DuplicatesCommand, RunsWithoutLoadingTheWindowLibraries)
{
    FixtureTree tree;
    tree.write(QStringLiteral("a"), patternBytes(5000, 1));
    tree.write(QStringLiteral("b"), patternBytes(5000, 1));
    // The dynamic loader names every library it loads; Qt Gui and Widgets alone would add about 7 MB to
    // the command's memory before it does any work.
    const CommandRun run = runVelloru(
        {QStringLiteral("duplicates"), tree.path()}, {{QStringLiteral("LD_DEBUG"), QStringLiteral("files")}});
    ASSERT_EQ(run.status, 0);
    EXPECT_TRUE(run.err.contains(QStringLiteral("libQt6Core"))) << "the loader's report is missing";
    EXPECT_FALSE(run.err.contains(QStringLiteral("libQt6Gui")));
    EXPECT_FALSE(run.err.contains(QStringLiteral("libQt6Widgets")));
    EXPECT_TRUE(run.out.contains(QStringLiteral("1 set")));
}

TEST(DuplicatesCommand, CopiesInADocumentsFolderThatIsALinkAreLeftForTheUserToChoose)
{
    ProgramHome home;
    const QByteArray photo = patternBytes(6000, 1);
    const QByteArray report = patternBytes(7000, 2);
    home.tree().write(QStringLiteral("home/docs/2023/photo.jpg"), photo);
    home.tree().write(QStringLiteral("home/docs/2024/photo.jpg"), photo);
    home.tree().write(QStringLiteral("home/docs/report.pdf"), report);
    home.tree().write(QStringLiteral("home/Downloads/report.pdf"), report);
    // ~/Documents is a link to ~/docs; ~/Music is a link to the home itself.
    ASSERT_EQ(::symlink("docs", QFile::encodeName(home.path(QStringLiteral("Documents")))), 0);
    ASSERT_EQ(::symlink(".", QFile::encodeName(home.path(QStringLiteral("Music")))), 0);
    const QString docs = QFileInfo(home.path(QStringLiteral("docs"))).canonicalFilePath();
    const QString downloads = QFileInfo(home.path(QStringLiteral("Downloads"))).canonicalFilePath();

    const QJsonObject byDefault = documentOf(home.run({QStringLiteral("duplicates"), QStringLiteral("--json")}));
    EXPECT_EQ(byDefault[QStringLiteral("roots")].toVariant().toStringList(),
        QStringList({home.path(QStringLiteral("Documents")), home.path(QStringLiteral("Downloads"))}))
        << "a user folder that leads to the home itself is no root";

    // The same copies whether the folder is named through the link, by where it leads, or found by walking
    // the home (which never follows the link).
    const QJsonObject byTarget = documentOf(home.run({QStringLiteral("duplicates"), QStringLiteral("--json"),
        home.path(QStringLiteral("docs")), home.path(QStringLiteral("Downloads"))}));
    const QJsonObject wholeHome
        = documentOf(home.run({QStringLiteral("duplicates"), QStringLiteral("--json"), home.path()}));
    for (const QJsonObject* document : {&byDefault, &byTarget, &wholeHome}) {
        SCOPED_TRACE(QJsonDocument(*document).toJson().toStdString());
        EXPECT_EQ((*document)[QStringLiteral("sets")].toArray().size(), 2);
        const QJsonArray photos = setHolding(*document, QStringLiteral("photo.jpg"));
        EXPECT_EQ(photos.size(), 2);
        EXPECT_EQ(pathsWhere(photos, "selected"), QStringList()) << "both copies are in Documents";
        const QJsonArray reports = setHolding(*document, QStringLiteral("report.pdf"));
        EXPECT_EQ(pathsWhere(reports, "keeper"), QStringList({docs + QStringLiteral("/report.pdf")}));
        EXPECT_EQ(pathsWhere(reports, "selected"), QStringList({downloads + QStringLiteral("/report.pdf")}));
    }
}

TEST(DuplicatesCommand, CopiesNamedLikeABundleAreShownButNeverTicked)
{
    FixtureTree tree;
    const QByteArray talk = patternBytes(6000, 3);
    tree.write(QStringLiteral("conference/talk.key"), talk);
    tree.write(QStringLiteral("backup/talk.key"), talk);

    const QJsonObject document
        = documentOf(runVelloru({QStringLiteral("duplicates"), QStringLiteral("--json"), tree.path()}));
    const QJsonArray members = setHolding(document, QStringLiteral("talk.key"));
    ASSERT_EQ(members.size(), 2) << QJsonDocument(document).toJson().toStdString();
    EXPECT_EQ(pathsWhere(members, "selected"), QStringList());
    for (const QJsonValue& member : members)
        EXPECT_EQ(member[QStringLiteral("blockReason")].toString(),
            QStringLiteral("Inside an app or library bundle — those are removed whole, never file by file"));
}

TEST(DuplicatesCommand, AMinimumSizeOfZeroFindsEmptyFilesToo)
{
    FixtureTree tree;
    tree.write(QStringLiteral("a/empty"), {});
    tree.write(QStringLiteral("b/empty"), {});
    tree.write(QStringLiteral("a/one"), "x");
    tree.write(QStringLiteral("b/one"), "x");
    const auto setSizes = [&](const QString& minimum) {
        const QJsonObject document = documentOf(runVelloru({QStringLiteral("duplicates"), QStringLiteral("--json"),
            QStringLiteral("--min-size"), minimum, tree.path()}));
        QList<qint64> sizes;
        for (const QJsonValue& set : document[QStringLiteral("sets")].toArray())
            sizes.append(set[QStringLiteral("size")].toInteger());
        std::sort(sizes.begin(), sizes.end());
        return sizes;
    };
    EXPECT_EQ(setSizes(QStringLiteral("0")), QList<qint64>({0, 1}));
    EXPECT_EQ(setSizes(QStringLiteral("1")), QList<qint64>({1}));
}
