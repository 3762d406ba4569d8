#include "ui/memory/ProcessTreeModel.h"

#include "common/ByteCount.h"
#include "ui/widgets/OutcomeLine.h"

#include <QColor>
#include <QSet>

#include <cmath>

namespace {

QString cpuText(double cpu)
{
    return QString::number(cpu, 'f', 1) + QStringLiteral(" %");
}

QString priorityText(int nice)
{
    return QStringLiteral("%1 (%2)").arg(PriorityBands::title(PriorityBands::bandOf(nice))).arg(nice);
}

// Whether two readings would show alike. Rows that only change beyond what is shown are not announced, since
// every announced change of a sorted figure makes the view sort and paint its rows again.
bool showsAlike(double cpu, qint64 memory, double otherCPU, qint64 otherMemory)
{
    return std::lround(cpu * 10) == std::lround(otherCPU * 10) && formatBytes(memory) == formatBytes(otherMemory);
}

bool sameFigures(const RunningProcess& a, const RunningProcess& b)
{
    return showsAlike(a.cpu, a.memory, b.cpu, b.memory) && a.nice == b.nice && a.isResponding == b.isResponding
        && a.name == b.name && a.user == b.user && a.figuresKnown == b.figuresKnown;
}

bool isNumeric(int column)
{
    return column == ProcessTreeModel::pid || column == ProcessTreeModel::cpu || column == ProcessTreeModel::memory;
}

} // namespace

ProcessTreeModel::ProcessTreeModel(QObject* parent)
    : QAbstractItemModel(parent)
{
}

void ProcessTreeModel::setGroups(const QList<ProcessGroup>& groups)
{
    m_all = groups;
    QList<ProcessGroup> shown;
    shown.reserve(groups.size());
    // A group's processes share one owner, so the first says whether the group is the system's.
    for (const ProcessGroup& group : groups)
        if (m_showSystem || !group.processes.first().isSystem)
            shown.append(group);
    sync(shown);
    if (m_messages.isEmpty())
        return;
    // A word on a row that has gone means nothing any more.
    QSet<QString> keys;
    for (const Row& row : std::as_const(m_rows)) {
        keys.insert(row.group.key);
        for (const RunningProcess& process : row.group.processes)
            keys.insert(processKey(process));
    }
    m_messages.removeIf([&keys](const auto& message) { return !keys.contains(message.key()); });
}

void ProcessTreeModel::setShowSystem(bool show)
{
    m_showSystem = show;
    setGroups(m_all);
}

void ProcessTreeModel::sync(const QList<ProcessGroup>& groups)
{
    QHash<QString, qsizetype> incoming;
    for (qsizetype i = 0; i < groups.size(); ++i)
        incoming.insert(groups[i].key, i);
    for (int row = int(m_rows.size()) - 1; row >= 0; --row) {
        if (incoming.contains(m_rows[row].group.key))
            continue;
        beginRemoveRows({}, row, row);
        m_rows.removeAt(row);
        endRemoveRows();
    }
    reindex();

    QSet<QString> present;
    QList<bool> changed(m_rows.size());
    for (int row = 0; row < m_rows.size(); ++row) {
        const ProcessGroup& fresh = groups[incoming.value(m_rows[row].group.key)];
        present.insert(fresh.key);
        ProcessGroup& group = m_rows[row].group;
        changed[row] = !showsAlike(group.cpu, group.memory, fresh.cpu, fresh.memory) || group.name != fresh.name;
        if (fresh.isApp) {
            changed[row] = syncChildren(row, fresh.processes) || changed[row];
            QList<RunningProcess> kept = std::move(group.processes);
            group = fresh;
            group.processes = std::move(kept);
        } else {
            changed[row] = changed[row] || !sameFigures(group.processes.first(), fresh.processes.first());
            group = fresh;
        }
    }
    announceChanges({}, changed);

    QList<Row> added;
    for (const ProcessGroup& group : groups)
        if (!present.contains(group.key))
            added.append({m_nextSerial++, group});
    if (added.isEmpty())
        return;
    beginInsertRows({}, int(m_rows.size()), int(m_rows.size() + added.size() - 1));
    m_rows.append(std::move(added));
    reindex();
    endInsertRows();
}

bool ProcessTreeModel::syncChildren(int row, const QList<RunningProcess>& processes)
{
    const QModelIndex parent = index(row, 0);
    QList<RunningProcess>& children = m_rows[row].group.processes;
    QHash<QString, qsizetype> incoming;
    for (qsizetype i = 0; i < processes.size(); ++i)
        incoming.insert(processKey(processes[i]), i);
    bool anyChange = false;
    for (int child = int(children.size()) - 1; child >= 0; --child) {
        if (incoming.contains(processKey(children[child])))
            continue;
        beginRemoveRows(parent, child, child);
        children.removeAt(child);
        endRemoveRows();
        anyChange = true;
    }
    QSet<QString> present;
    QList<bool> changed(children.size());
    for (qsizetype i = 0; i < children.size(); ++i) {
        const QString key = processKey(children[i]);
        present.insert(key);
        const RunningProcess& fresh = processes[incoming.value(key)];
        changed[i] = !sameFigures(children[i], fresh);
        children[i] = fresh;
    }
    announceChanges(parent, changed);
    QList<RunningProcess> added;
    for (const RunningProcess& process : processes)
        if (!present.contains(processKey(process)))
            added.append(process);
    if (added.isEmpty())
        return anyChange || changed.contains(true);
    beginInsertRows(parent, int(children.size()), int(children.size() + added.size() - 1));
    children.append(std::move(added));
    endInsertRows();
    return true;
}

void ProcessTreeModel::announceChanges(const QModelIndex& parent, const QList<bool>& changed)
{
    // One signal per run of changed rows: every signal makes the sorted view check its order again.
    for (int first = 0; first < changed.size(); ++first) {
        if (!changed[first])
            continue;
        int last = first;
        while (last + 1 < changed.size() && changed[last + 1])
            ++last;
        Q_EMIT dataChanged(index(first, 0, parent), index(last, columnTotal - 1, parent));
        first = last;
    }
}

void ProcessTreeModel::reindex()
{
    m_rowOfSerial.clear();
    for (int row = 0; row < m_rows.size(); ++row)
        m_rowOfSerial.insert(m_rows[row].serial, row);
}

void ProcessTreeModel::setMessage(const QString& key, const QString& message, bool failed)
{
    if (message.isEmpty())
        m_messages.remove(key);
    else
        m_messages.insert(key, {message, failed});
    for (int row = 0; row < m_rows.size(); ++row) {
        const ProcessGroup& group = m_rows[row].group;
        if (group.key == key)
            Q_EMIT dataChanged(index(row, status), index(row, status));
        if (!group.isApp)
            continue;
        const QModelIndex parent = index(row, 0);
        for (int child = 0; child < group.processes.size(); ++child)
            if (processKey(group.processes[child]) == key)
                Q_EMIT dataChanged(index(child, status, parent), index(child, status, parent));
    }
}

const RunningProcess* ProcessTreeModel::processAt(const QModelIndex& index) const
{
    if (!index.isValid())
        return nullptr;
    if (index.internalId() == 0) {
        const ProcessGroup& group = m_rows[index.row()].group;
        return group.isApp ? nullptr : &group.processes.first();
    }
    return &m_rows[m_rowOfSerial.value(index.internalId())].group.processes[index.row()];
}

QString ProcessTreeModel::keyAt(const QModelIndex& index) const
{
    if (!index.isValid())
        return {};
    if (const RunningProcess* process = processAt(index))
        return processKey(*process);
    return m_rows[index.row()].group.key;
}

std::optional<ProcessTarget> ProcessTreeModel::targetAt(const QModelIndex& index) const
{
    if (!index.isValid())
        return std::nullopt;
    if (index.internalId() == 0) {
        const ProcessGroup& group = m_rows[index.row()].group;
        return group.isApp ? ProcessTarget::group(group) : ProcessTarget::process(group.processes.first());
    }
    const ProcessGroup& group = m_rows[m_rowOfSerial.value(index.internalId())].group;
    return ProcessTarget::process(group.processes[index.row()], group.processes);
}

QString ProcessTreeModel::describe(const QModelIndex& index) const
{
    if (!index.isValid())
        return {};
    const RunningProcess* process = processAt(index);
    if (!process) {
        const ProcessGroup& group = m_rows[index.row()].group;
        return QStringLiteral("%1 — %2 processes of %3, %4 in memory")
            .arg(group.name)
            .arg(group.processes.size())
            .arg(group.processes.first().user, formatBytes(group.memory));
    }
    const QString program = process->path.isEmpty() ? QStringLiteral("its program can’t be read") : process->path;
    QString text
        = QStringLiteral("%1 — process %2 of %3 · %4").arg(process->name).arg(process->id).arg(process->user, program);
    if (process->isApp)
        text += QStringLiteral(" · part of %1").arg(process->appName);
    if (!process->figuresKnown)
        text += QStringLiteral(" · its CPU share and priority are hidden from you");
    return text;
}

QString ProcessTreeModel::statusOf(const QString& key, const RunningProcess* process) const
{
    if (const auto message = m_messages.constFind(key); message != m_messages.constEnd())
        return message->text;
    if (process)
        return process->isResponding ? QString() : QStringLiteral("Not responding");
    return {};
}

QVariant ProcessTreeModel::display(const ProcessGroup& group, const RunningProcess* process, int column) const
{
    switch (column) {
    case name: return process ? process->name : group.name;
    case pid: return process ? QString::number(process->id) : QString();
    case user: return process ? process->user : group.processes.first().user;
    case cpu:
        return process && !process->figuresKnown ? QStringLiteral("—") : cpuText(process ? process->cpu : group.cpu);
    case memory: return formatBytes(process ? process->memory : group.memory);
    case priority: {
        if (process)
            return process->figuresKnown ? priorityText(process->nice) : QStringLiteral("—");
        const int nice = group.processes.first().nice;
        const bool same = std::all_of(group.processes.cbegin(), group.processes.cend(),
            [nice](const RunningProcess& member) { return member.nice == nice; });
        return same ? priorityText(nice) : QStringLiteral("Mixed");
    }
    case status: return statusOf(process ? processKey(*process) : group.key, process);
    }
    return {};
}

QVariant ProcessTreeModel::sortValue(const ProcessGroup& group, const RunningProcess* process, int column) const
{
    switch (column) {
    case pid: return process ? process->id : 0;
    case cpu: return process ? process->cpu : group.cpu;
    case memory: return process ? process->memory : group.memory;
    case priority: return process ? process->nice : group.processes.first().nice;
    default: return display(group, process, column).toString().toLower();
    }
}

QModelIndex ProcessTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    if (!parent.isValid())
        return createIndex(row, column, quintptr(0));
    return createIndex(row, column, quintptr(m_rows[parent.row()].serial));
}

QModelIndex ProcessTreeModel::parent(const QModelIndex& child) const
{
    if (!child.isValid() || child.internalId() == 0)
        return {};
    return createIndex(m_rowOfSerial.value(child.internalId()), 0, quintptr(0));
}

int ProcessTreeModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return int(m_rows.size());
    if (parent.internalId() != 0 || parent.column() != 0)
        return 0;
    const ProcessGroup& group = m_rows[parent.row()].group;
    return group.isApp ? int(group.processes.size()) : 0;
}

int ProcessTreeModel::columnCount(const QModelIndex&) const
{
    return columnTotal;
}

QVariant ProcessTreeModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const int row = index.internalId() == 0 ? index.row() : m_rowOfSerial.value(index.internalId());
    const ProcessGroup& group = m_rows[row].group;
    const RunningProcess* process = processAt(index);
    switch (role) {
    case Qt::DisplayRole: return display(group, process, index.column());
    case sortRole: return sortValue(group, process, index.column());
    case Qt::ToolTipRole:
        if (index.column() == name || index.column() == user)
            return describe(index);
        if (index.column() == status)
            return display(group, process, status);
        return {};
    case Qt::DecorationRole:
        if (index.column() == status && m_messages.value(process ? processKey(*process) : group.key).failed)
            return OutcomeLine::iconFor(OutcomeLine::Kind::failure);
        return {};
    case Qt::TextAlignmentRole:
        return isNumeric(index.column()) ? QVariant(int(Qt::AlignRight | Qt::AlignVCenter)) : QVariant();
    case Qt::ForegroundRole: {
        const QString key = process ? processKey(*process) : group.key;
        if (index.column() == status && m_messages.value(key).failed)
            return OutcomeLine::colorFor(OutcomeLine::Kind::failure);
        return {};
    }
    default: return {};
    }
}

QVariant ProcessTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::ToolTipRole && section == memory)
        return QStringLiteral("Resident memory: what the process holds in RAM now. Memory shared between processes "
                              "counts in each of them, so an app’s total can be more than it alone uses.");
    if (role != Qt::DisplayRole)
        return {};
    switch (section) {
    case name: return QStringLiteral("Name");
    case pid: return QStringLiteral("PID");
    case user: return QStringLiteral("User");
    case cpu: return QStringLiteral("CPU");
    case memory: return QStringLiteral("Memory (resident)");
    case priority: return QStringLiteral("Priority");
    case status: return QStringLiteral("Status");
    }
    return {};
}
