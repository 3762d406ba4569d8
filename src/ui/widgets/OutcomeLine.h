#pragma once

#include <QWidget>

class QLabel;
class WrappedLabel;

// One line that says how something the user pressed went, placed right under that button: a green tick
// for success, a red warning sign for a failure, an information sign for a note, then a whole sentence
// that wraps. Hidden while there is nothing to say.
class OutcomeLine : public QWidget {
    Q_OBJECT

public:
    enum class Kind { success, failure, note };

    explicit OutcomeLine(QWidget* parent = nullptr);
    OutcomeLine(const QString& objectName, QWidget* parent);

    void showSuccess(const QString& sentence) { showOutcome(Kind::success, sentence); }
    void showFailure(const QString& sentence) { showOutcome(Kind::failure, sentence); }
    void showNote(const QString& sentence) { showOutcome(Kind::note, sentence); }
    void showOutcome(Kind kind, const QString& sentence);
    void clear();

    Kind kind() const { return m_kind; }
    QString text() const;

    // The colour a kind of outcome is drawn in, shared with tables that mark outcomes.
    static QColor colorFor(Kind kind);
    static QIcon iconFor(Kind kind);

private:
    QLabel* m_icon = nullptr;
    WrappedLabel* m_text = nullptr;
    Kind m_kind = Kind::note;
};
