#pragma once

#include <QScrollArea>

class QVBoxLayout;

// A full-window step's body: one centred column of a readable width, centred vertically too, that
// scrolls when the window is too low for it. Wrapped labels added to column() fill its width and grow.
class CentredColumn : public QScrollArea {
    Q_OBJECT

public:
    explicit CentredColumn(int readableWidth, QWidget* parent = nullptr);

    QVBoxLayout* column() const { return m_column; }
    // The widget to parent what goes into the column.
    QWidget* columnWidget() const { return m_columnWidget; }

private:
    QWidget* m_columnWidget = nullptr;
    QVBoxLayout* m_column = nullptr;
};
