#pragma once

#include "usage/UsageItem.h"

#include <QWidget>

class QLabel;
class QTreeWidget;

// A list of files with their sizes, largest first: the largest files of a whole walk, or the files lying
// in one folder. Shown in place of the chart; the side panel acts on the selected file.
class FileList : public QWidget {
    Q_OBJECT

public:
    explicit FileList(QWidget* parent = nullptr);

    // `title` says what the list is; `showFolders` adds the folder each file lies in (for a whole tree).
    void setFiles(const QString& title, QList<UsageItem> files, bool showFolders);
    const QList<UsageItem>& files() const { return m_files; }
    int selectedIndex() const;
    QTreeWidget* tree() const { return m_tree; }

Q_SIGNALS:
    void selectedChanged();

private:
    QLabel* m_title = nullptr;
    QTreeWidget* m_tree = nullptr;
    QList<UsageItem> m_files;
};
