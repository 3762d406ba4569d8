#pragma once

#include <QLabel>

// A bold heading, `scale` times the body text: 1.4 for a page title, larger for a full-window step.
inline QLabel* makeHeading(const QString& text, QWidget* parent, qreal scale = 1.4)
{
    auto* heading = new QLabel(text, parent);
    QFont font = heading->font();
    font.setPointSizeF(font.pointSizeF() * scale);
    font.setBold(true);
    heading->setFont(font);
    return heading;
}
