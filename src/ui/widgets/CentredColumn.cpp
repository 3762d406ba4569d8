#include "ui/widgets/CentredColumn.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

CentredColumn::CentredColumn(int readableWidth, QWidget* parent)
    : QScrollArea(parent)
{
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    auto* content = new QWidget(this);
    auto* across = new QHBoxLayout(content);
    m_columnWidget = new QWidget(content);
    m_columnWidget->setMaximumWidth(readableWidth);
    across->addStretch();
    across->addWidget(m_columnWidget, 100);
    across->addStretch();

    auto* down = new QVBoxLayout(m_columnWidget);
    down->setContentsMargins(0, 0, 0, 0);
    down->addStretch();
    m_column = new QVBoxLayout;
    down->addLayout(m_column);
    down->addStretch();
    setWidget(content);
}
