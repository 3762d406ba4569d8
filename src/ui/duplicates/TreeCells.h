#pragma once

#include <QTreeWidgetItem>

// Sets a cell's text and a tooltip that always holds it whole (after `tip`, when given), so a cell the
// column cuts short can still be read.
inline void setTreeCell(QTreeWidgetItem* item, int column, const QString& text, const QString& tip = {})
{
    item->setText(column, text);
    item->setToolTip(column, tip.isEmpty() ? text : tip + QLatin1Char('\n') + text);
}
