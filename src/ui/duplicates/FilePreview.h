#pragma once

#include <QImage>
#include <QWidget>

#include <memory>
#include <thread>

class OutcomeLine;
class PathLabel;
class QLabel;
class QPushButton;
class WrappedLabel;

// The file picked in a list, shown so the user can tell what it is: a thumbnail for a picture, the start
// of a text file, otherwise its kind; with Show in Folder. The file is read off the main thread.
class FilePreview : public QWidget {
    Q_OBJECT

public:
    explicit FilePreview(QWidget* parent = nullptr);

    // Shows `path`, or nothing when it is empty.
    void showFile(const QString& path);
    const QString& path() const { return m_path; }
    bool isLoading() const { return m_loading != nullptr; }
    QLabel* picture() const { return m_picture; }
    WrappedLabel* text() const { return m_text; }
    OutcomeLine* outcome() const { return m_outcome; }

    // What a preview shows of one file.
    struct Content {
        QImage image;
        QString text;
    };

private:
    void showInFolder();

    QString m_path;
    PathLabel* m_pathLabel = nullptr;
    QLabel* m_picture = nullptr;
    WrappedLabel* m_text = nullptr;
    QPushButton* m_showInFolder = nullptr;
    OutcomeLine* m_outcome = nullptr;
    std::unique_ptr<std::jthread> m_loading;
    std::unique_ptr<std::jthread> m_revealing;
};
