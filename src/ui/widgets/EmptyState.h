#pragma once

#include <QWidget>

class QLabel;
class QPushButton;
class QVBoxLayout;
class WrappedLabel;

// What a list or page shows while it has nothing: a picture, a short title, a sentence that says what
// to do to fill it, and optionally the button that does it.
class EmptyState : public QWidget {
    Q_OBJECT

public:
    EmptyState(const QIcon& icon, const QString& title, const QString& whatToDo, QWidget* parent = nullptr);

    void setTitle(const QString& title);
    void setMessage(const QString& whatToDo);
    // Adds a button under the message and returns it.
    QPushButton* addAction(const QString& text, const QString& objectName);

    QString title() const;
    QString message() const;

private:
    QLabel* m_title = nullptr;
    WrappedLabel* m_message = nullptr;
    QVBoxLayout* m_actions = nullptr;
};
