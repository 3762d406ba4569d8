#include "usage/UsageModel.h"

#include "common/ByteCount.h"
#include "common/Log.h"
#include "usage/UsageTexts.h"
#include "usage/WalkRoot.h"

#include <QStorageInfo>

UsageModel::UsageModel(QObject* parent)
    : QObject(parent)
{
    m_sampler.setInterval(100);
    connect(&m_sampler, &QTimer::timeout, this, &UsageModel::sampleCounters);
}

UsageModel::~UsageModel()
{
    stopWalk();
}

bool UsageModel::measure(const QString& path)
{
    stopWalk();
    m_opened.clear();
    m_progress = {};
    m_scanning.clear();
    m_counters = {};
    m_expectedBytes.reset();
    const ResolvedRoot resolved = resolveWalkRoot(path);
    const std::optional<QString>& root = resolved.path;
    m_rootPath = root.value_or(path);
    m_failure = resolved.failure;
    if (!root) {
        Q_EMIT itemsChanged();
        return false;
    }

    const QStorageInfo volume(*root);
    if (m_finishedTotals.contains(*root))
        m_expectedBytes = m_finishedTotals.value(*root);
    else if (volume.isValid() && volume.rootPath() == *root)
        m_expectedBytes = volume.bytesTotal() - volume.bytesFree();
    else
        m_expectedBytes.reset();

    logLine(QStringLiteral("usage walk started root=%1").arg(logValue(*root)));
    const quint64 generation = ++m_generation;
    m_walk = std::make_unique<FastWalk>(toFileName(*root), defaultLeaveOut());
    m_consumer = std::jthread([this, generation, walk = m_walk.get()] {
        while (std::optional<Progress> value = walk->next())
            QMetaObject::invokeMethod(
                this, [this, generation, value = std::move(*value)] { receive(generation, value); },
                Qt::QueuedConnection);
        QMetaObject::invokeMethod(
            this, [this, generation] { streamEnded(generation); }, Qt::QueuedConnection);
    });
    m_sampler.start();
    Q_EMIT itemsChanged();
    Q_EMIT measuringChanged(true);
    return true;
}

void UsageModel::cancel()
{
    if (!m_walk)
        return;
    stopWalk();
    Q_EMIT measuringChanged(false);
    Q_EMIT progressChanged();
}

void UsageModel::stopWalk()
{
    m_sampler.stop();
    if (!m_walk)
        return;
    m_walk->cancel();
    m_consumer = {}; // joins: after cancel the stream ends at once
    m_walk.reset();
    ++m_generation;
}

void UsageModel::receive(quint64 generation, const Progress& progress)
{
    if (generation != m_generation)
        return;
    m_progress = progress;
    m_scanning = progress.scanning ? fromFileName(*progress.scanning) : QString();
    Q_EMIT itemsChanged();
    Q_EMIT progressChanged();
}

void UsageModel::streamEnded(quint64 generation)
{
    if (generation != m_generation)
        return;
    if (!m_progress.finished)
        m_failure = UsageTexts::cannotExamine(m_rootPath);
    else
        m_finishedTotals.insert(m_rootPath, m_progress.measuredTotal + m_progress.rootFileBytes);
    sampleCounters();
    stopWalk();
    logLine(QStringLiteral("usage walk finished root=%1 bytes=%2 folders=%3")
                .arg(logValue(m_rootPath))
                .arg(m_progress.measuredTotal + m_progress.rootFileBytes)
                .arg(m_counters.foldersListed));
    Q_EMIT measuringChanged(false);
    Q_EMIT itemsChanged();
    Q_EMIT progressChanged();
}

void UsageModel::sampleCounters()
{
    if (!m_walk)
        return;
    m_counters = m_walk->counters();
    Q_EMIT progressChanged();
}

QString UsageModel::unreadableNote() const
{
    const std::vector<std::string>& unreadable = m_progress.unreadableFolders;
    return unreadable.empty()
        ? QString()
        : UsageTexts::unreadableFolders(qsizetype(unreadable.size()), fromFileName(unreadable.front()));
}

QString UsageModel::shownPath() const
{
    return m_opened.empty() ? m_rootPath : fromFileName(m_opened.back()->path);
}

qint64 UsageModel::shownTotal() const
{
    return m_opened.empty() ? checkedAdd(m_progress.measuredTotal, m_progress.rootFileBytes) : m_opened.back()->total;
}

QList<UsageItem> UsageModel::shownItems() const
{
    return m_opened.empty() ? itemsOf(m_progress, m_rootPath) : itemsOf(*m_opened.back());
}

bool UsageModel::open(int index)
{
    const QList<UsageItem> items = shownItems();
    if (index < 0 || index >= items.size() || !items[index].canOpen())
        return false;
    m_opened.push_back(items[index].node);
    Q_EMIT itemsChanged();
    return true;
}

void UsageModel::back()
{
    if (m_opened.empty())
        return;
    m_opened.pop_back();
    Q_EMIT itemsChanged();
}
