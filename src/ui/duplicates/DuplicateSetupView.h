#pragma once

#include <QListWidget>
#include <QStringList>
#include <QWidget>

#include <cstdint>

class OutcomeLine;
class QComboBox;
class QPushButton;
class WrappedLabel;

// A list of folders that takes folders dropped on it from the file manager.
class FolderDropList : public QListWidget {
    Q_OBJECT

public:
    explicit FolderDropList(QWidget* parent = nullptr);

Q_SIGNALS:
    void foldersDropped(const QStringList& folders);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
};

// Where to look and how small a file may be: the folders (the usual ones to start with, added with a
// dialog or dropped in, removed again), the minimum size, and Find Duplicates.
class DuplicateSetupView : public QWidget {
    Q_OBJECT

public:
    explicit DuplicateSetupView(QWidget* parent = nullptr);

    QStringList roots() const { return m_roots; }
    void setRoots(const QStringList& roots);
    void addRoots(const QStringList& folders);
    std::uint64_t minimumSize() const;
    FolderDropList* rootList() const { return m_list; }
    QPushButton* scanButton() const { return m_scan; }
    QComboBox* minimumSizeBox() const { return m_minimum; }

Q_SIGNALS:
    void scanRequested();

private:
    void showRoots();

    QStringList m_roots;
    FolderDropList* m_list = nullptr;
    WrappedLabel* m_noFolders = nullptr;
    QPushButton* m_remove = nullptr;
    QComboBox* m_minimum = nullptr;
    QPushButton* m_scan = nullptr;
};
