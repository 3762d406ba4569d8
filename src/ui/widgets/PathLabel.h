#pragma once

#include <QLabel>

// Shows a path on one line, shortened in the middle (where the least telling folders are) when it does
// not fit; the whole path is always in the tooltip and can be selected and copied.
class PathLabel : public QLabel {
    Q_OBJECT

public:
    explicit PathLabel(QWidget* parent = nullptr);

    void setPath(const QString& path);
    const QString& path() const { return m_path; }

    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void fit();

    QString m_path;
};
