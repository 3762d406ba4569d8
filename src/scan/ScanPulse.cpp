#include "scan/ScanPulse.h"

void ScanPulse::recordFolder(const QString& folderPath)
{
    QStringView path(folderPath);
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    const QString name = (slash < 0 || path.size() == 1) ? path.toString() : path.mid(slash + 1).toString();

    std::lock_guard guard(m_lock);
    m_location = name;
}

void ScanPulse::add(qint64 files, qint64 bytes)
{
    std::lock_guard guard(m_lock);
    m_files += files;
    m_bytes += bytes;
}

ScanPulse::Snapshot ScanPulse::snapshot() const
{
    std::lock_guard guard(m_lock);
    return {m_files, m_bytes, m_location};
}
