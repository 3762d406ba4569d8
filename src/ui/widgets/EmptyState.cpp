#include "ui/widgets/EmptyState.h"

#include "ui/Headings.h"
#include "ui/widgets/WrappedLabel.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int iconSize = 48;
constexpr int readableWidth = 460;

} // namespace

EmptyState::EmptyState(const QIcon& icon, const QString& title, const QString& whatToDo, QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("emptyState"));
    // A centred column of a readable width; the wrapped message fills it and grows downwards.
    auto* outer = new QHBoxLayout(this);
    auto* column = new QWidget(this);
    column->setMaximumWidth(readableWidth);
    outer->addStretch();
    outer->addWidget(column, 1);
    outer->addStretch();

    auto* layout = new QVBoxLayout(column);
    layout->addStretch();
    auto* picture = new QLabel(column);
    picture->setPixmap(icon.pixmap(iconSize, iconSize));
    picture->setAlignment(Qt::AlignCenter);
    layout->addWidget(picture);
    m_title = makeHeading(title, column, 1.3);
    m_title->setObjectName(QStringLiteral("emptyTitle"));
    m_title->setAlignment(Qt::AlignCenter);
    m_title->setWordWrap(true);
    layout->addWidget(m_title);
    m_message = new WrappedLabel(whatToDo, QStringLiteral("emptyMessage"), column);
    m_message->setAlignment(Qt::AlignCenter);
    layout->addWidget(m_message);
    m_actions = new QVBoxLayout;
    layout->addLayout(m_actions);
    layout->addStretch();
}

void EmptyState::setTitle(const QString& title)
{
    m_title->setText(title);
}

void EmptyState::setMessage(const QString& whatToDo)
{
    m_message->setText(whatToDo);
}

QPushButton* EmptyState::addAction(const QString& text, const QString& objectName)
{
    auto* button = new QPushButton(text, m_message->parentWidget());
    button->setObjectName(objectName);
    m_actions->addWidget(button, 0, Qt::AlignHCenter);
    return button;
}

QString EmptyState::title() const
{
    return m_title->text();
}

QString EmptyState::message() const
{
    return m_message->text();
}
