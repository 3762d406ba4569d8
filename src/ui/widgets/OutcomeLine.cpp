#include "ui/widgets/OutcomeLine.h"

#include "ui/widgets/WrappedLabel.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QIcon>
#include <QStyle>

OutcomeLine::OutcomeLine(QWidget* parent)
    : QWidget(parent)
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_icon = new QLabel(this);
    m_icon->setObjectName(QStringLiteral("outcomeIcon"));
    m_icon->setAlignment(Qt::AlignTop);
    layout->addWidget(m_icon, 0, Qt::AlignTop);
    m_text = new WrappedLabel({}, QStringLiteral("outcomeText"), this);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(m_text, 1);
    hide();
}

OutcomeLine::OutcomeLine(const QString& objectName, QWidget* parent)
    : OutcomeLine(parent)
{
    setObjectName(objectName);
}

QColor OutcomeLine::colorFor(Kind kind)
{
    switch (kind) {
    case Kind::success: return QColor(0x2e, 0x7d, 0x32);
    case Kind::failure: return QColor(0xc6, 0x28, 0x28);
    case Kind::note: return QApplication::palette().color(QPalette::WindowText);
    }
    Q_UNREACHABLE();
}

QIcon OutcomeLine::iconFor(Kind kind)
{
    const QStyle* style = QApplication::style();
    switch (kind) {
    case Kind::success: return style->standardIcon(QStyle::SP_DialogApplyButton);
    case Kind::failure: return style->standardIcon(QStyle::SP_MessageBoxCritical);
    case Kind::note: return style->standardIcon(QStyle::SP_MessageBoxInformation);
    }
    Q_UNREACHABLE();
}

void OutcomeLine::showOutcome(Kind kind, const QString& sentence)
{
    m_kind = kind;
    const int size = fontMetrics().height();
    m_icon->setPixmap(iconFor(kind).pixmap(size, size));
    m_text->setText(sentence);
    QPalette palette = m_text->palette();
    palette.setColor(QPalette::WindowText, colorFor(kind));
    m_text->setPalette(palette);
    setToolTip(kind == Kind::failure ? QStringLiteral("Failed") : QString());
    show();
}

void OutcomeLine::clear()
{
    m_text->clear();
    hide();
}

QString OutcomeLine::text() const
{
    return m_text->text();
}
