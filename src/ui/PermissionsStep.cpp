#include "ui/PermissionsStep.h"

#include "app/PermissionCenter.h"
#include "ui/Headings.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

PermissionsStep::PermissionsStep(PermissionCenter& permissions, QWidget* parent)
    : QWidget(parent)
    , m_permissions(permissions)
{
    setObjectName(QStringLiteral("permissionsStep"));
    // One centred column of a readable width; wrapped labels fill it.
    auto* outer = new QVBoxLayout(this);
    auto* column = new QWidget(this);
    column->setFixedWidth(560);
    outer->addStretch();
    outer->addWidget(column, 0, Qt::AlignHCenter);
    outer->addStretch();
    auto* layout = new QVBoxLayout(column);
    auto* title = makeHeading(QStringLiteral("Permissions"), this, 1.8);
    layout->addWidget(title, 0, Qt::AlignHCenter);

    m_heading = new QLabel(this);
    m_heading->setObjectName(QStringLiteral("permissionsHeading"));
    m_heading->setWordWrap(true);
    m_heading->setAlignment(Qt::AlignHCenter);
    layout->addWidget(m_heading);
    m_lost = new QLabel(this);
    m_lost->setObjectName(QStringLiteral("permissionsLost"));
    m_lost->setWordWrap(true);
    m_lost->setAlignment(Qt::AlignHCenter);
    layout->addWidget(m_lost);

    m_rows = new QVBoxLayout;
    layout->addLayout(m_rows);

    m_suppress = new QCheckBox(QStringLiteral("Don’t remind me about missing permissions"), this);
    m_suppress->setObjectName(QStringLiteral("suppressReminders"));
    layout->addWidget(m_suppress, 0, Qt::AlignHCenter);
    auto* done = new QPushButton(QStringLiteral("Continue"), this);
    done->setObjectName(QStringLiteral("permissionsContinue"));
    done->setDefault(true);
    layout->addWidget(done, 0, Qt::AlignHCenter);

    connect(m_suppress, &QCheckBox::toggled, &permissions, &PermissionCenter::setRemindersSuppressed);
    connect(done, &QPushButton::clicked, this, &PermissionsStep::finished);
    connect(&permissions, &PermissionCenter::changed, this, &PermissionsStep::showChecklist);
    showChecklist();
}

void PermissionsStep::showChecklist()
{
    m_heading->setText(m_permissions.headingText());
    const auto lost = m_permissions.lostSentence();
    m_lost->setText(lost.value_or(QString()));
    m_lost->setVisible(lost.has_value());
    m_suppress->setChecked(m_permissions.remindersSuppressed());
    m_suppress->setVisible(!m_permissions.missing().isEmpty());

    while (QLayoutItem* item = m_rows->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    for (const Permission permission : m_permissions.checklist()) {
        const bool granted = !m_permissions.missing().contains(permission);
        auto* row = new QLabel(this);
        row->setObjectName(QStringLiteral("permission-") + Permissions::rawValue(permission));
        row->setText(QStringLiteral("<b>%1</b> — %2<br>%3")
                         .arg(Permissions::title(permission),
                             granted ? QStringLiteral("granted") : QStringLiteral("not granted"),
                             Permissions::purpose(permission)));
        row->setWordWrap(true);
        m_rows->addWidget(row);
    }
}
