// The helper under attack: a user it serves pointing it at root's files, and connections that abuse the
// wire. Each runs against the real daemon on a socket of its own.
#include "helper/HelperProtocol.h"
#include "platform/TrashStore.h"

#include "HelperDaemonFixture.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QLocalSocket>
#include <QProcess>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr unsigned nobody = 65534;

void chownTree(const QString& path, unsigned uid)
{
    ASSERT_EQ(::lchown(QFile::encodeName(path).constData(), uid, uid), 0) << path.toStdString();
}

CommandRun runVelloruAs(unsigned uid, const QString& home, const QStringList& arguments, const QString& socketPath)
{
    QProcess velloru;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home);
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/data"));
    environment.insert(QStringLiteral("VELLORU_HELPER_SOCKET"), socketPath);
    velloru.setProcessEnvironment(environment);
    velloru.start(QStringLiteral("setpriv"),
        QStringList{QStringLiteral("--reuid=%1").arg(uid), QStringLiteral("--regid=%1").arg(uid),
            QStringLiteral("--clear-groups"), QStringLiteral("--"), QStringLiteral(VELLORU_BINARY)}
            + arguments);
    velloru.waitForFinished(60'000);
    return {velloru.exitCode(), QString::fromUtf8(velloru.readAllStandardOutput()),
        QString::fromUtf8(velloru.readAllStandardError())};
}

qint64 residentKilobytes(qint64 pid)
{
    const QByteArray status = readWholeFile(QStringLiteral("/proc/%1/status").arg(pid));
    for (const QByteArray& line : status.split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toLongLong();
    return -1;
}

} // namespace

TEST_F(HelperDaemonTest, EmptyingATrashNeverReachesBeyondIt)
{
    if (!runningAsRoot())
        GTEST_SKIP() << "needs root to serve a second, real user";
    // Root's private folder, which a user the helper serves tries to have emptied.
    const QString victim = tree.makeFolder(QStringLiteral("root-only/Trash"));
    tree.write(QStringLiteral("root-only/Trash/files/secret.txt"), "root's");
    tree.write(QStringLiteral("root-only/Trash/precious.txt"), "root's");
    ASSERT_EQ(::chmod(QFile::encodeName(tree.path(QStringLiteral("root-only"))).constData(), 0700), 0);

    // nobody's Trash: files/ is a link to root's folder; info/ holds a link and a real record.
    const QString trash = tree.makeFolder(QStringLiteral("nobody/data/Trash"));
    tree.makeFolder(QStringLiteral("nobody/data/Trash/info"));
    ASSERT_TRUE(QFile::link(victim, trash + QStringLiteral("/files")));
    for (const QString& path : {tree.path(QStringLiteral("nobody")), tree.path(QStringLiteral("nobody/data")), trash,
             trash + QStringLiteral("/info"), trash + QStringLiteral("/files")})
        chownTree(path, nobody);
    const QJsonObject emptyMine{{QStringLiteral("trashFolders"), QJsonArray{trash}}};
    auto reply = requestAs(nobody, socketPath, HelperProtocol::Op::emptyTrash, emptyMine);
    ASSERT_TRUE(reply);
    EXPECT_FALSE(reply->value(u"success").toBool()) << reply->value(u"message").toString().toStdString();
    EXPECT_EQ(readWholeFile(victim + QStringLiteral("/files/secret.txt")), "root's");
    EXPECT_EQ(readWholeFile(victim + QStringLiteral("/precious.txt")), "root's");

    // files/ real, holding links to root's folder and to a file in it: removed as links, nothing followed.
    QFile::remove(trash + QStringLiteral("/files"));
    tree.makeFolder(QStringLiteral("nobody/data/Trash/files/deep"));
    ASSERT_TRUE(QFile::link(victim, trash + QStringLiteral("/files/link")));
    ASSERT_TRUE(QFile::link(victim + QStringLiteral("/precious.txt"), trash + QStringLiteral("/files/deep/file-link")));
    tree.write(QStringLiteral("nobody/data/Trash/files/deep/own.txt"), "mine");
    for (const QString& path : {trash + QStringLiteral("/files"), trash + QStringLiteral("/files/deep"),
             trash + QStringLiteral("/files/deep/own.txt")})
        chownTree(path, nobody);
    reply = requestAs(nobody, socketPath, HelperProtocol::Op::emptyTrash, emptyMine);
    ASSERT_TRUE(reply);
    EXPECT_TRUE(reply->value(u"success").toBool()) << reply->value(u"message").toString().toStdString();
    EXPECT_TRUE(QDir(trash + QStringLiteral("/files")).isEmpty());
    EXPECT_EQ(readWholeFile(victim + QStringLiteral("/files/secret.txt")), "root's");
    EXPECT_EQ(readWholeFile(victim + QStringLiteral("/precious.txt")), "root's");

    // Root's folder named as the Trash, directly or through a link of nobody's: refused.
    ASSERT_TRUE(QFile::link(victim, tree.path(QStringLiteral("nobody/Trash"))));
    for (const QString& named : {victim, tree.path(QStringLiteral("nobody/Trash"))}) {
        reply = requestAs(
            nobody, socketPath, HelperProtocol::Op::emptyTrash, {{QStringLiteral("trashFolders"), QJsonArray{named}}});
        ASSERT_TRUE(reply);
        EXPECT_FALSE(reply->value(u"success").toBool()) << named.toStdString();
        EXPECT_TRUE(reply->value(u"message").toString().contains(QStringLiteral("not a Trash folder of yours")))
            << reply->value(u"message").toString().toStdString();
    }
    EXPECT_EQ(readWholeFile(victim + QStringLiteral("/files/secret.txt")), "root's");
}

TEST_F(HelperDaemonTest, AUserMovesOnlyWhatTheyCouldHaveRemovedThemselves)
{
    if (!runningAsRoot())
        GTEST_SKIP() << "needs root to run Velloru as a second, real user";
    QFile::setPermissions(tree.path(), QFileDevice::Permissions(0x7755));
    const QString roots = tree.write(QStringLiteral("system/report.txt"), "root's");
    const QString own = tree.write(QStringLiteral("system/nobody.log"), "nobody's");
    QFile::setPermissions(tree.path(QStringLiteral("system")), QFileDevice::Permissions(0x7755));
    chownTree(own, nobody);
    const QString home = tree.makeFolder(QStringLiteral("nobody"));
    chownTree(home, nobody);

    const CommandRun run = runVelloruAs(nobody, home, {QStringLiteral("trash"), roots, own}, socketPath);
    if (run.out.isEmpty())
        GTEST_SKIP() << "the program cannot run as another user here: " << run.err.toStdString();
    // Root's file in root's folder stays, with the helper's reason.
    EXPECT_EQ(readWholeFile(roots), "root's");
    EXPECT_TRUE(run.out.contains(QStringLiteral("belongs to another user, in a folder that isn’t yours")))
        << run.out.toStdString();
    // nobody's own file in root's folder goes to nobody's Trash, its record nobody's to read.
    EXPECT_FALSE(QFile::exists(own));
    const QString trashed = home + QStringLiteral("/data/Trash/files/nobody.log");
    EXPECT_EQ(readWholeFile(trashed), "nobody's");
    EXPECT_EQ(QFileInfo(trashInfoPathFor(trashed)).ownerId(), nobody);
    EXPECT_EQ(run.status, 1);

    // A link of nobody's whose parent leads into root's folder is judged where it leads.
    ASSERT_TRUE(QFile::link(tree.path(QStringLiteral("system")), home + QStringLiteral("/shortcut")));
    const auto viaLink = requestAs(nobody, socketPath, HelperProtocol::Op::moveItemsToTrash,
        {{QStringLiteral("paths"), QJsonArray{home + QStringLiteral("/shortcut/report.txt")}},
            {QStringLiteral("userTrash"), home + QStringLiteral("/data/Trash")}});
    ASSERT_TRUE(viaLink);
    const QJsonObject item = viaLink->value(u"items").toArray().first().toObject();
    EXPECT_FALSE(item.value(u"moved").toBool());
    EXPECT_EQ(readWholeFile(roots), "root's");
}

TEST_F(HelperDaemonTest, ThePolicyRefusesTopFoldersHomesAndTheirHolders)
{
    // Root may move from every home, but never a home folder, a folder holding one, or a top folder itself.
    const QString userTrash = tree.makeFolder(QStringLiteral("root-data/Trash"));
    // "/root" is root's home folder in the password database.
    const QStringList refused{QStringLiteral("/home"), QStringLiteral("/tmp"), QStringLiteral("/var/tmp"),
        QStringLiteral("/mnt"), QStringLiteral("/root"), QStringLiteral("/"), QStringLiteral("/etc/passwd"),
        QStringLiteral("/tmp/../etc/passwd"), QStringLiteral("relative/path"), QStringLiteral("/tmp/."),
        QStringLiteral("/tmp/..")};
    const auto moved = [&](const QString& path) {
        const auto reply = std::get<QJsonObject>(callAndWait(HelperProtocol::Op::moveItemsToTrash,
            {{QStringLiteral("paths"), QJsonArray{path}}, {QStringLiteral("userTrash"), userTrash}}));
        return reply.value(u"items").toArray().first().toObject();
    };
    for (const QString& path : refused) {
        const QJsonObject item = moved(path);
        EXPECT_FALSE(item.value(u"moved").toBool()) << path.toStdString();
        EXPECT_FALSE(item.value(u"reason").toString().isEmpty()) << path.toStdString();
    }
    EXPECT_TRUE(QFileInfo::exists(QStringLiteral("/etc/passwd")));
    // A link whose parent resolves outside the movable folders is judged where it leads.
    ASSERT_TRUE(QFile::link(QStringLiteral("/etc"), tree.path(QStringLiteral("etc-link"))));
    EXPECT_FALSE(moved(tree.path(QStringLiteral("etc-link/passwd"))).value(u"moved").toBool());
    EXPECT_TRUE(QFileInfo::exists(QStringLiteral("/etc/passwd")));
}

TEST_F(HelperDaemonTest, ConnectionsAreBoundedInNumberSizeAndTime)
{
    const auto connected = [this]() {
        auto socket = std::make_unique<QLocalSocket>();
        socket->connectToServer(socketPath);
        EXPECT_TRUE(socket->waitForConnected(2000));
        return socket;
    };
    const auto droppedSoon = [](QLocalSocket& socket, int milliseconds) {
        return socket.state() != QLocalSocket::ConnectedState || socket.waitForDisconnected(milliseconds);
    };

    // A user holds at most 32 connections; the next one is closed at once.
    std::vector<std::unique_ptr<QLocalSocket>> held;
    for (int i = 0; i < 32; ++i)
        held.push_back(connected());
    QTest::qWait(200);
    auto extra = connected();
    EXPECT_TRUE(droppedSoon(*extra, 2000));
    for (const auto& socket : held)
        EXPECT_EQ(socket->state(), QLocalSocket::ConnectedState);
    held.clear();
    QTest::qWait(200);

    // Frames that cannot be trusted end the connection: empty, too large for a request, not an object,
    // not JSON. 20 connections announcing 16 MiB each cost the helper nothing.
    std::vector<std::unique_ptr<QLocalSocket>> abusers;
    const QList<QByteArray> bad{QByteArray(4, '\0'), QByteArray("\x00\x00\x00\x03[1]", 7),
        QByteArray("\x00\x00\x00\x05{nope", 9), QByteArray("\x00\x20\x00\x00", 4) + QByteArray(64 * 1024, 'x')};
    for (const QByteArray& frame : bad) {
        abusers.push_back(connected());
        abusers.back()->write(frame);
        abusers.back()->flush();
    }
    for (int i = 0; i < 20; ++i) {
        abusers.push_back(connected());
        abusers.back()->write(QByteArray("\x01\x00\x00\x00", 4) + QByteArray(1024 * 1024, 'y'));
        abusers.back()->flush();
    }
    for (const auto& socket : abusers)
        EXPECT_TRUE(droppedSoon(*socket, 3000));
    EXPECT_LT(residentKilobytes(daemon.processId()), 64 * 1024);

    // Half a request is given up after the time limit, while the helper goes on serving others.
    auto slow = connected();
    const QByteArray whole
        = HelperProtocol::frame({{QStringLiteral("id"), 1}, {QStringLiteral("op"), HelperProtocol::Op::version}});
    slow->write(whole.left(whole.size() - 3));
    slow->flush();
    std::optional<QString> version;
    helper->installedHelperVersion(5s, [&version](std::optional<QString> v) { version = v.value_or(QString()); });
    while (!version)
        QTest::qWait(10);
    EXPECT_EQ(*version, HelperProtocol::version);
    EXPECT_TRUE(droppedSoon(*slow, 4000));
    EXPECT_EQ(daemon.state(), QProcess::Running);
    QTest::qWait(200); // for the helper's last lines to come through its pipe
    const QByteArray log = daemon.readAll();
    EXPECT_TRUE(log.contains("too many connections")) << log.constData();
    EXPECT_TRUE(log.contains("request not finished in time")) << log.constData();
}

TEST_F(HelperDaemonTest, ARequestCannotForgeALogLine)
{
    const QString forged = QStringLiteral("version\nVelloru helper: request op=emptyTrash id=1 uid=0");
    callAndWait(forged, {});
    callAndWait(HelperProtocol::Op::sizesOfPaths,
        {{QStringLiteral("paths"), QJsonArray{QStringLiteral("/tmp/a\nVelloru helper: trash path=/etc uid=0")}}});
    const QString userTrash = tree.makeFolder(QStringLiteral("data/Trash"));
    callAndWait(HelperProtocol::Op::moveItemsToTrash,
        {{QStringLiteral("paths"), QJsonArray{QStringLiteral("/tmp/x\r\nVelloru helper: trash path=/etc moved=true")}},
            {QStringLiteral("userTrash"), userTrash}});
    QTest::qWait(200);
    const QList<QByteArray> lines = daemon.readAll().split('\n');
    int requests = 0;
    for (const QByteArray& line : lines) {
        EXPECT_FALSE(line.startsWith("Velloru helper: request op=emptyTrash")) << line.constData();
        EXPECT_FALSE(line.startsWith("Velloru helper: trash path=/etc")) << line.constData();
        requests += line.startsWith("Velloru helper: request op=") ? 1 : 0;
    }
    EXPECT_EQ(requests, 3);
}

namespace {

// The helper with a one-second limit per task.
class HelperDaemonQuickLimitTest : public HelperDaemonTest {
protected:
    QString taskTimeoutSeconds() const override { return QStringLiteral("1"); }
};

bool anyProcessRuns(const QByteArray& commandLine)
{
    for (const QString& pid : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs))
        if (readWholeFile(QStringLiteral("/proc/%1/cmdline").arg(pid)) == commandLine)
            return true;
    return false;
}

} // namespace

TEST_F(HelperDaemonQuickLimitTest, ATaskPastItsLimitFailsAndLeavesNoProcessBehind)
{
    // The task starts a process of its own and waits: both go at the limit.
    const TaskResult result = runTask(QStringLiteral("forks"), 10s);
    EXPECT_FALSE(result.success);
    EXPECT_EQ(result.message, QStringLiteral("sh didn’t finish in time."));
    QTest::qWait(300);
    EXPECT_FALSE(anyProcessRuns(QByteArray("sleep\0"
                                           "31.7\0",
        11)));
}
