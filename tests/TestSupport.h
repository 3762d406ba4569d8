#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <optional>
#include <ostream>

// Lets GoogleTest print a QString as its text in failure messages.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

// A temporary folder to build fixture trees in.
class FixtureTree {
public:
    FixtureTree();
    // Removes the tree by its names' bytes, which QTemporaryDir, going by text, cannot do for a name that
    // isn't valid UTF-8.
    ~FixtureTree();
    QString path(const QString& relative = {}) const;
    // Writes a file (parents created) and returns its absolute path.
    QString write(const QString& relative, const QByteArray& content);
    QString makeFolder(const QString& relative);

private:
    QTemporaryDir m_dir;
};

// Collects the "Velloru: " log lines written while it lives.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    QStringList lines() const;
    bool contains(const QString& fragment) const;
};

bool runningAsRoot();

// While it lives, this thread and the threads it starts lose root's right to read any file, so a test
// running as root can make a file or folder unreadable with chmod 000. Does nothing when not root.
class FileAccessChecksEnforced {
public:
    FileAccessChecksEnforced();
    ~FileAccessChecksEnforced();
    FileAccessChecksEnforced(const FileAccessChecksEnforced&) = delete;
    FileAccessChecksEnforced& operator=(const FileAccessChecksEnforced&) = delete;

private:
    bool m_dropped = false;
};

// A tmpfs mounted for the test's life (root only); nothing when it could not be mounted.
class TmpfsMount {
public:
    static std::optional<TmpfsMount> mount(const QString& where, const QString& options);
    TmpfsMount(TmpfsMount&& other) noexcept;
    TmpfsMount& operator=(TmpfsMount&&) = delete;
    ~TmpfsMount();
    const QString& path() const { return m_path; }
    // Remounts read-only or read-write in place.
    bool remount(const QString& options) const;

private:
    explicit TmpfsMount(QString path)
        : m_path(std::move(path))
    {
    }
    QString m_path;
};

QByteArray readWholeFile(const QString& path);

// File names are bytes, and these take them as bytes, so a test can make names that aren't valid UTF-8
// (which no QString can name exactly). Parent folders must exist. True on success.
bool writeFileNamedBytes(const QByteArray& path, const QByteArray& content);
bool makeFolderNamedBytes(const QByteArray& path);

// One run of the velloru program as a child process.
struct CommandRun {
    int status = -1;
    QString out;
    QString err;
};

// Runs build/velloru with these arguments and extra environment variables, waiting up to two minutes.
CommandRun runVelloru(const QStringList& arguments, const QList<QPair<QString, QString>>& environment = {});
// The same for any program (a shell or a wrapper that starts velloru).
CommandRun runProgram(
    const QString& program, const QStringList& arguments, const QList<QPair<QString, QString>>& environment = {});

// The real privileged helper (velloru-helper) on a socket of its own, serving this user and running
// stand-in programs for its maintenance tasks: `tasks` is its --tasks JSON ({"task": [["program", …], …]}),
// or null for the helper's own commands.
class HelperOnSocket {
public:
    explicit HelperOnSocket(
        const QByteArray& tasks, const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());
    ~HelperOnSocket();
    HelperOnSocket(const HelperOnSocket&) = delete;
    HelperOnSocket& operator=(const HelperOnSocket&) = delete;

    const QString& socketPath() const { return m_socket; }
    // False when the helper never made its socket; `output` then says why.
    bool isListening() const { return m_listening; }
    QByteArray output() { return m_daemon.readAll(); }

private:
    FixtureTree m_tree;
    QString m_socket;
    QProcess m_daemon;
    bool m_listening = false;
};
