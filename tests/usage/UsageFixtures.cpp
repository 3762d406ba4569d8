#include "UsageFixtures.h"

#include "usage/WalkRoot.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

qint64 duBytes(const QString& path, const QStringList& options)
{
    QProcess du;
    du.start(
        QStringLiteral("du"), QStringList{QStringLiteral("-s"), QStringLiteral("-B1")} + options + QStringList{path});
    du.waitForFinished(60'000);
    return QString::fromUtf8(du.readAllStandardOutput()).section(QLatin1Char('\t'), 0, 0).toLongLong();
}

std::vector<Progress> walkAll(const QString& root, std::unordered_set<std::string> leaveOut)
{
    FastWalk walk(toFileName(root), std::move(leaveOut));
    std::vector<Progress> values;
    while (std::optional<Progress> value = walk.next())
        values.push_back(std::move(*value));
    return values;
}

std::vector<std::shared_ptr<const DirNode>> allNodes(const Progress& progress)
{
    std::vector<std::shared_ptr<const DirNode>> nodes(progress.measured.begin(), progress.measured.end());
    for (std::size_t i = 0; i < nodes.size(); ++i)
        for (const auto& child : nodes[i]->subdirectories)
            nodes.push_back(child);
    return nodes;
}

std::shared_ptr<const DirNode> findNode(const Progress& progress, const QString& path)
{
    for (const auto& node : allNodes(progress))
        if (fromFileName(node->path) == path)
            return node;
    return nullptr;
}

void writeFileOfSize(const QString& path, qint64 size)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(QByteArray(size, 'v'));
}
