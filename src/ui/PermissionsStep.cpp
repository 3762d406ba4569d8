#include "ui/PermissionsStep.h"

#include "app/PermissionCenter.h"
#include "ui/Headings.h"
#include "ui/widgets/CentredColumn.h"
#include "ui/widgets/HelperSetupButton.h"
#include "ui/widgets/WrappedLabel.h"

#include <QCheckBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int readableWidth = 600;

} // namespace

PermissionsStep::PermissionsStep(
    PermissionCenter& permissions, HelperManager& helper, HelperService& helperService, QWidget* parent)
    : QWidget(parent)
    , m_permissions(permissions)
{
    setObjectName(QStringLiteral("permissionsStep"));
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto* body = new CentredColumn(readableWidth, this);
    outer->addWidget(body);
    QWidget* column = body->columnWidget();
    QVBoxLayout* layout = body->column();

    auto* title = makeHeading(QStringLiteral("Permissions"), column, 1.8);
    title->setAlignment(Qt::AlignCenter);
    layout->addWidget(title);
    m_heading = new WrappedLabel({}, QStringLiteral("permissionsHeading"), column);
    m_heading->setAlignment(Qt::AlignHCenter);
    layout->addWidget(m_heading);
    m_lost = new WrappedLabel({}, QStringLiteral("permissionsLost"), column);
    m_lost->setAlignment(Qt::AlignHCenter);
    layout->addWidget(m_lost);
    layout->addSpacing(12);

    // The checklist is fixed for the life of the step; only what each row says changes.
    for (const Permission permission : m_permissions.checklist()) {
        auto* row = new WrappedLabel({}, QStringLiteral("permission-") + Permissions::rawValue(permission), column);
        m_rows.insert(permission, row);
        layout->addWidget(row);
        if (permission == Permission::helper)
            layout->addWidget(new HelperSetupButton(helper, helperService, column));
    }
    layout->addSpacing(12);

    m_suppress = new QCheckBox(QStringLiteral("Don’t remind me about missing permissions"), column);
    m_suppress->setObjectName(QStringLiteral("suppressReminders"));
    layout->addWidget(m_suppress, 0, Qt::AlignHCenter);
    auto* done = new QPushButton(QStringLiteral("Continue"), column);
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
    for (auto it = m_rows.cbegin(); it != m_rows.cend(); ++it) {
        const bool granted = !m_permissions.missing().contains(it.key());
        it.value()->setText(
            QStringLiteral("<b>%1</b> — %2<br>%3")
                .arg(Permissions::title(it.key()), granted ? QStringLiteral("granted") : QStringLiteral("not granted"),
                    Permissions::purpose(it.key())));
    }
}
