#include "ui/startup/StartupRow.h"

#include "helper/HelperManager.h"
#include "startup/StartupTexts.h"
#include "ui/widgets/HelperSetupButton.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/PathLabel.h"
#include "ui/widgets/WrappedLabel.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

QString badgeText(const StartupItem& item)
{
    switch (item.health) {
    case StartupHealth::programMissing: return StartupTexts::programMissingBadge();
    case StartupHealth::appInTrash: return StartupTexts::appInTrashBadge();
    case StartupHealth::ok: break;
    }
    return item.systemSettingsDisagrees ? StartupTexts::disagreesBadge() : QString();
}

} // namespace

StartupRow::StartupRow(const StartupItem& item, HelperManager& helper, HelperService& service, QWidget* parent)
    : QWidget(parent)
    , m_item(item)
{
    setObjectName(QStringLiteral("startupRow"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 6, 0, 6);

    auto* top = new QHBoxLayout;
    auto* name = new WrappedLabel(
        QStringLiteral("<b>%1</b> · %2").arg(item.name.toHtmlEscaped(), StartupNames::kindLabel(item.kind)),
        QStringLiteral("startupName"), this);
    name->setTextFormat(Qt::RichText);
    top->addWidget(name, 1);
    m_switch = new QCheckBox(item.enabled ? QStringLiteral("On") : QStringLiteral("Off"), this);
    m_switch->setObjectName(QStringLiteral("startupSwitch"));
    m_switch->setChecked(item.enabled);
    top->addWidget(m_switch);
    m_remove = new QPushButton(QStringLiteral("Remove…"), this);
    m_remove->setObjectName(QStringLiteral("startupRemove"));
    m_remove->setVisible(item.removal != StartupRemoval::ownedByApp);
    top->addWidget(m_remove);
    layout->addLayout(top);

    auto* program = new PathLabel(this);
    program->setPath(item.detail);
    layout->addWidget(program);
    const QString badge = badgeText(item);
    if (!badge.isEmpty()) {
        auto* health = new OutcomeLine(QStringLiteral("startupHealth"), this);
        health->showFailure(badge);
        layout->addWidget(health);
    }
    if (item.removal == StartupRemoval::ownedByApp)
        layout->addWidget(new WrappedLabel(StartupTexts::ownedByApp(), QStringLiteral("startupOwned"), this));
    if (item.control == StartupControl::systemLaunchd && helper.state() != HelperManager::State::ready)
        layout->addWidget(new HelperSetupButton(helper, service, this));
    m_outcome = new OutcomeLine(QStringLiteral("startupOutcome"), this);
    layout->addWidget(m_outcome);

    connect(m_switch, &QCheckBox::clicked, this, [this](bool on) { Q_EMIT switchRequested(m_item.id, on); });
    connect(m_remove, &QPushButton::clicked, this, [this] { Q_EMIT removeRequested(m_item.id); });
}

void StartupRow::setBusy(bool busy)
{
    m_switch->setEnabled(!busy);
    m_remove->setEnabled(!busy);
}
