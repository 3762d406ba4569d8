#pragma once

#include "scan/RiskLevel.h"

#include <QHashFunctions>
#include <QUrl>
#include <QUuid>

// One file or folder a scan offers for removal. Equality and hashing take every field, so two items for
// the same path with different reasons are different items.
struct ScanItem {
    QUuid id;
    QUrl url;
    qint64 size = 0;
    RiskLevel risk = RiskLevel::unproven;
    QString detail;

    // A new item with a fresh id.
    static ScanItem make(QUrl url, qint64 size, RiskLevel risk, QString detail);

    friend bool operator==(const ScanItem&, const ScanItem&) = default;
};

size_t qHash(const ScanItem& item, size_t seed = 0) noexcept;
