#include "ui/widgets/PathLabel.h"

#include <QResizeEvent>

PathLabel::PathLabel(QWidget* parent)
    : QLabel(parent)
{
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void PathLabel::setPath(const QString& path)
{
    m_path = path;
    setToolTip(path);
    fit();
}

QSize PathLabel::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * 8, QLabel::minimumSizeHint().height()};
}

void PathLabel::resizeEvent(QResizeEvent* event)
{
    QLabel::resizeEvent(event);
    fit();
}

void PathLabel::fit()
{
    setText(fontMetrics().elidedText(m_path, Qt::ElideMiddle, std::max(contentsRect().width(), 1)));
}
