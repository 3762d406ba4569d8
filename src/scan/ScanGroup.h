#pragma once

#include "scan/ScanItem.h"

#include <QList>

// A titled group of found items, in the order the rules produced them.
struct ScanGroup {
    QUuid id;
    QString title;
    QString systemImage; // the symbol drawn beside the heading
    QList<ScanItem> items;

    static ScanGroup make(QString title, QString systemImage, QList<ScanItem> items);

    // The sum of the items' sizes; an overflow stops the program (see checkedAdd).
    qint64 size() const;

    friend bool operator==(const ScanGroup&, const ScanGroup&) = default;
};

// The total of a whole result: the sum of its group sizes.
qint64 totalSize(const QList<ScanGroup>& groups);
