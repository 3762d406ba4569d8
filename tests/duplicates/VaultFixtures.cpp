#include "VaultFixtures.h"

#include "duplicates/DuplicateScan.h"

#include <QSignalSpy>

QList<DuplicateGroup> scannedGroups(const QStringList& roots, std::uint64_t minimumSize)
{
    DuplicateScan scan;
    scan.setRoots(roots);
    scan.setMinimumSize(minimumSize);
    QSignalSpy phases(&scan, &DuplicateScan::phaseChanged);
    scan.start();
    while (scan.phase() == DuplicateScan::Phase::scanning)
        if (!phases.wait(60'000))
            return {};
    return scan.groups();
}

bool finishOperation(DuplicateVaultController& vault, const std::function<bool()>& start)
{
    QSignalSpy finished(&vault, &DuplicateVaultController::finished);
    if (!start())
        return false;
    return finished.wait(60'000);
}

const DuplicateFile* memberAt(const QList<DuplicateGroup>& groups, const QString& path)
{
    for (const DuplicateGroup& group : groups)
        for (const DuplicateFile& member : group.members)
            if (member.path == path)
                return &member;
    return nullptr;
}
