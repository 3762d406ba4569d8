#pragma once

#include <QHash>
#include <QList>
#include <QString>

// One item handed to the Trash mover, with the size the caller measured for it.
struct TrashItem {
    QString path;
    qint64 size = 0;
    friend bool operator==(const TrashItem&, const TrashItem&) = default;
};

struct TrashFailure {
    QString path;
    QString reason; // one sentence saying why and what the user can do
};

// The outcome of one removal request: every item ends in either `succeeded` or `failed`.
struct TrashResult {
    qint64 freed = 0; // the callers' sizes of the items that moved
    QList<TrashFailure> failed;
    QList<TrashItem> succeeded;
    QHash<QString, QString> trashedURLs; // former path → where the item lies now inside a Trash folder
};
