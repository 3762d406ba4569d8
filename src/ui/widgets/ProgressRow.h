#pragma once

#include <QElapsedTimer>
#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;
class QTimer;
class WrappedLabel;

// Long work as the user sees it: what is being done, a bar that fills as it goes, the time it has taken,
// and Cancel. The bar moves back and forth only until the first measure of the whole arrives; give it one
// (setProgress with a total) as soon as the work knows it.
class ProgressRow : public QWidget {
    Q_OBJECT

public:
    enum class Cancel { offered, notOffered };

    explicit ProgressRow(Cancel cancel = Cancel::offered, QWidget* parent = nullptr);

    // Shows the row and starts the clock.
    void start(const QString& what);
    void setText(const QString& what);
    // `done` of `total`; a total of 0 or less means the whole is not known yet.
    void setProgress(qint64 done, qint64 total);
    // Hides the row and stops the clock.
    void finish();

    bool isRunning() const { return m_clock.isValid(); }
    QString text() const;
    QProgressBar* bar() const { return m_bar; }
    QPushButton* cancelButton() const { return m_cancel; }
    QString elapsedText() const;

Q_SIGNALS:
    void cancelRequested();

private:
    void showElapsed();

    WrappedLabel* m_text = nullptr;
    QProgressBar* m_bar = nullptr;
    QLabel* m_elapsed = nullptr;
    QPushButton* m_cancel = nullptr;
    QTimer* m_ticker = nullptr;
    QElapsedTimer m_clock;
};
