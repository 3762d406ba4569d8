#pragma once

#include "usage/UsageItem.h"

#include <QWidget>

class PathLabel;
class QLabel;

// The facts about one item of the charts: its name, path, allocated size, share of the shown folder and
// the number of files in it.
class UsageDetails : public QWidget {
    Q_OBJECT

public:
    explicit UsageDetails(QWidget* parent = nullptr);

    void show(const UsageItem& item, qint64 total);
    void showFolder(const QString& path, qint64 total, qint64 fileCount);
    void clear();

private:
    QLabel* m_name = nullptr;
    PathLabel* m_path = nullptr;
    QLabel* m_size = nullptr;
    QLabel* m_share = nullptr;
    QLabel* m_files = nullptr;
};
