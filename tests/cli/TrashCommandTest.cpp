#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

namespace {

QList<QPair<QString, QString>> sandbox(const FixtureTree& tree)
{
    return {{QStringLiteral("XDG_DATA_HOME"), tree.path(QStringLiteral("data"))}};
}

} // namespace

TEST(TrashCommand, TrashesAndPutsBackRealFiles)
{
    FixtureTree tree;
    const QString report = tree.write(QStringLiteral("work/report.pdf"), "report");
    const QString folder = tree.makeFolder(QStringLiteral("work/old project"));
    tree.write(QStringLiteral("work/old project/notes.txt"), "notes");

    const CommandRun trashed = runVelloru(
        {QStringLiteral("trash"), report, folder, tree.path(QStringLiteral("work/missing"))}, sandbox(tree));
    EXPECT_EQ(trashed.status, 1); // one of the three did not move
    EXPECT_TRUE(trashed.out.contains(QStringLiteral("2 moved (11 bytes), 1 not moved."))) << trashed.out.toStdString();
    // A name that never existed is a typing slip, not a removal that failed: said, and not logged.
    EXPECT_TRUE(trashed.out.contains(QStringLiteral("It doesn’t exist — check the name.")))
        << trashed.out.toStdString();
    EXPECT_FALSE(QFile::exists(report));

    const CommandRun summary = runVelloru({QStringLiteral("trash-summary"), QStringLiteral("--json")}, sandbox(tree));
    const QJsonObject totals = QJsonDocument::fromJson(summary.out.toUtf8()).object();
    EXPECT_EQ(totals.value(u"items").toInt(), 2);
    EXPECT_EQ(totals.value(u"bytes").toInteger(), 11);

    const CommandRun activity = runVelloru({QStringLiteral("activity"), QStringLiteral("--json")}, sandbox(tree));
    const QJsonArray entries = QJsonDocument::fromJson(activity.out.toUtf8()).object().value(u"entries").toArray();
    ASSERT_EQ(entries.size(), 2);
    const QString id = entries[0].toObject().value(u"id").toString();
    const CommandRun putBack = runVelloru({QStringLiteral("put-back"), id.left(8)}, sandbox(tree));
    EXPECT_EQ(putBack.status, 0) << putBack.err.toStdString();
    EXPECT_EQ(readWholeFile(report), "report");

    const CommandRun again = runVelloru({QStringLiteral("put-back"), id}, sandbox(tree));
    EXPECT_EQ(again.status, 1);
    EXPECT_TRUE(again.err.contains(QStringLiteral("no longer in the Trash")));
    const CommandRun unknown = runVelloru({QStringLiteral("put-back"), QStringLiteral("ZZZZ")}, sandbox(tree));
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(runVelloru({QStringLiteral("trash")}, sandbox(tree)).status, 2);
}

TEST(TrashCommand, TheDesktopsOwnTrashListsWhatTheCommandTrashed)
{
    for (const char* tool : {"dbus-run-session", "gio"})
        if (QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty())
            GTEST_SKIP() << tool << " is not installed, so the desktop's Trash (gvfs) cannot be asked";
    FixtureTree tree;
    const QString report = tree.write(QStringLiteral("work/report.pdf"), "report");
    ASSERT_EQ(runVelloru({QStringLiteral("trash"), report}, sandbox(tree)).status, 0);

    // gvfs answers on a session bus of its own.
    QProcess gio;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), tree.path(QStringLiteral("data")));
    gio.setProcessEnvironment(environment);
    gio.start(QStringLiteral("dbus-run-session"),
        {QStringLiteral("--"), QStringLiteral("gio"), QStringLiteral("trash"), QStringLiteral("--list")});
    ASSERT_TRUE(gio.waitForFinished(30'000));
    if (gio.exitStatus() != QProcess::NormalExit || gio.exitCode() != 0)
        GTEST_SKIP() << "gio cannot list the Trash here (is gvfs installed?): "
                     << gio.readAllStandardError().trimmed().toStdString();
    const QString listed = QString::fromUtf8(gio.readAllStandardOutput());
    EXPECT_TRUE(listed.contains(report)) << listed.toStdString();
}

TEST(TrashCommand, AKillDuringABatchLeavesEveryItemInPlaceOrTrashedWithItsRecord)
{
    FixtureTree tree;
    QStringList files;
    for (int i = 0; i < 3000; ++i)
        files.append(tree.write(QStringLiteral("batch/file-%1.txt").arg(i), QByteArray::number(i)));
    const QString trashFiles = tree.path(QStringLiteral("data/Trash/files"));

    QProcess velloru;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), tree.path(QStringLiteral("data")));
    velloru.setProcessEnvironment(environment);
    velloru.start(QStringLiteral(VELLORU_BINARY), QStringList{QStringLiteral("trash")} + files);
    QElapsedTimer waited;
    waited.start();
    while (QDir(trashFiles).entryList(QDir::Files).size() < 20 && waited.elapsed() < 30'000)
        QThread::usleep(200);
    velloru.kill();
    velloru.waitForFinished();

    int inPlace = 0, trashed = 0;
    for (int i = 0; i < files.size(); ++i) {
        const QString name = QStringLiteral("file-%1.txt").arg(i);
        const bool here = QFile::exists(files[i]);
        const bool inTrash = QFile::exists(trashFiles + QLatin1Char('/') + name);
        ASSERT_NE(here, inTrash) << name.toStdString();
        if (inTrash) {
            const QByteArray record
                = readWholeFile(tree.path(QStringLiteral("data/Trash/info/")) + name + QStringLiteral(".trashinfo"));
            ASSERT_TRUE(record.contains("Path=" + QFile::encodeName(files[i]) + '\n')) << name.toStdString();
            EXPECT_EQ(readWholeFile(trashFiles + QLatin1Char('/') + name), QByteArray::number(i));
        }
        (here ? inPlace : trashed) += 1;
    }
    EXPECT_GE(trashed, 20);
    RecordProperty("movedBeforeTheKill", trashed);
    RecordProperty("leftInPlace", inPlace);
}
