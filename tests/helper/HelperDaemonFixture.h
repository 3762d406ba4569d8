#pragma once

#include "helper/HelperManager.h"
#include "helper/HelperProtocol.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <cstring>

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <memory>

using namespace std::chrono_literals;

// Sends one request from a child process that runs as `uid` and returns the helper's reply; nothing when
// the helper closed the connection without one.
inline std::optional<QJsonObject> requestAs(
    unsigned uid, const QString& socketPath, const QString& op, const QJsonObject& args)
{
    const QByteArray path = QFile::encodeName(socketPath);
    const QByteArray request = HelperProtocol::frame(
        {{QStringLiteral("id"), 7}, {QStringLiteral("op"), op}, {QStringLiteral("args"), args}});
    int channel[2];
    if (::pipe(channel) != 0)
        return std::nullopt;
    const pid_t child = ::fork();
    if (child == 0) {
        // Passes on whatever the helper answers until it hangs up or goes quiet.
        ::close(channel[0]);
        if (::setgid(uid) != 0 || ::setuid(uid) != 0)
            ::_exit(3);
        const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path.constData(), std::min<size_t>(path.size(), sizeof address.sun_path - 1));
        if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
            ::_exit(4);
        const timeval limit{20, 0};
        ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        (void)!::write(fd, request.constData(), size_t(request.size()));
        char buffer[65536];
        ssize_t n;
        while ((n = ::read(fd, buffer, sizeof buffer)) > 0)
            (void)!::write(channel[1], buffer, size_t(n));
        ::_exit(0);
    }
    ::close(channel[1]);
    QByteArray received;
    std::optional<QJsonObject> reply;
    char buffer[65536];
    ssize_t n;
    while (!reply && (n = ::read(channel[0], buffer, sizeof buffer)) > 0) {
        received.append(buffer, n);
        if (const auto message = HelperProtocol::takeMessage(received).message)
            reply = message->value(u"reply").toObject();
    }
    ::close(channel[0]);
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    return reply;
}

// The real helper daemon on a socket of its own, with quick stand-in programs for its tasks and for
// systemctl, and its mount points made in the test's folder.
class HelperDaemonTest : public ::testing::Test {
protected:
    // How long the helper lets a task run.
    virtual QString taskTimeoutSeconds() const { return QStringLiteral("20"); }

    void SetUp() override
    {
        QFile::setPermissions(tree.path(), QFileDevice::Permissions(0x7755));
        tree.write(QStringLiteral("tasks.json"),
            R"({"hang": [["sleep", "30"]], "slow": [["sleep", "2"]], "quick": [["true"]], "broken": [["false"]],
                "twoSteps": [["true", "first"], ["true", "second"]],
                "forks": [["sh", "-c", "sleep 31.7 & sleep 31.7"]]})");
        // systemctl is a stand-in that writes down how it was called.
        const QString log = tree.path(QStringLiteral("systemctl.log"));
        tree.write(QStringLiteral("bin/systemctl"), "#!/bin/sh\necho \"$@\" >> '" + QFile::encodeName(log) + "'\n");
        QFile::setPermissions(tree.path(QStringLiteral("bin/systemctl")), QFileDevice::Permissions(0x7755));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PATH"),
            tree.path(QStringLiteral("bin")) + QLatin1Char(':') + environment.value(QStringLiteral("PATH")));
        daemon.setProcessEnvironment(environment);
        socketPath = tree.path(QStringLiteral("run/helper.sock"));
        daemon.setProcessChannelMode(QProcess::MergedChannels);
        daemon.start(QStringLiteral(VELLORU_HELPER_BINARY),
            {QStringLiteral("--socket"), socketPath, QStringLiteral("--tasks"), tree.path(QStringLiteral("tasks.json")),
                QStringLiteral("--task-timeout"), taskTimeoutSeconds(), QStringLiteral("--request-time-limit"),
                QStringLiteral("1"), QStringLiteral("--allow-uid"), QStringLiteral("65534"),
                QStringLiteral("--mount-root"), tree.path(QStringLiteral("mnt"))});
        ASSERT_TRUE(daemon.waitForStarted());
        for (int i = 0; i < 100 && !QFileInfo::exists(socketPath); ++i)
            QTest::qWait(20);
        ASSERT_TRUE(QFileInfo::exists(socketPath)) << daemon.readAll().toStdString();
        helper = std::make_unique<HelperManager>(socketPath);
        helper->setState(HelperManager::State::ready);
    }

    void TearDown() override
    {
        helper.reset();
        daemon.kill();
        daemon.waitForFinished();
    }

    // Runs a task and waits for its one answer.
    TaskResult runTask(const QString& task, std::chrono::milliseconds timeout)
    {
        std::optional<TaskResult> result;
        helper->run(task, timeout, {}, [&result](TaskResult r) { result = r; });
        for (int i = 0; i < 1000 && !result; ++i)
            QTest::qWait(10);
        return result.value_or(TaskResult{false, QStringLiteral("no callback"), 0});
    }

    HelperManager::Reply callAndWait(const QString& op, const QJsonObject& arguments)
    {
        std::optional<HelperManager::Reply> reply;
        helper->call(op, arguments, 5s, [&reply](HelperManager::Reply r) { reply = std::move(r); });
        for (int i = 0; i < 500 && !reply; ++i)
            QTest::qWait(10);
        return reply.value_or(QStringLiteral("no callback"));
    }

    FixtureTree tree;
    QString socketPath;
    QProcess daemon;
    std::unique_ptr<HelperManager> helper;
};
