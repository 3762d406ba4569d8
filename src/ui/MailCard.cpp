#include "ui/MailCard.h"

#include "app/FullDiskAccess.h"
#include "common/BackgroundTask.h"
#include "helper/MailOptimizer.h"
#include "helper/Maintenance.h"
#include "helper/MaintenanceTexts.h"
#include "removal/AuditLog.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/WrappedLabel.h"

#include <QDir>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

MailCard::MailCard(AuditLog& audit, FullDiskAccess& fullDisk, QWidget* parent)
    : QGroupBox(MaintenanceTexts::mailTitle(), parent)
    , m_audit(audit)
    , m_fullDisk(fullDisk)
{
    setObjectName(QStringLiteral("task-mail"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new WrappedLabel(MaintenanceTexts::mailCardText(), this));

    m_accessPrompt = new QWidget(this);
    m_accessPrompt->setObjectName(QStringLiteral("mailFullDiskAccess"));
    auto* promptLayout = new QVBoxLayout(m_accessPrompt);
    promptLayout->setContentsMargins({});
    auto* needs = new WrappedLabel(MaintenanceTexts::needsFullDiskAccess(), m_accessPrompt);
    needs->setStyleSheet(QStringLiteral("font-weight: bold"));
    promptLayout->addWidget(needs);
    promptLayout->addWidget(new WrappedLabel(MaintenanceTexts::mailFullDiskAccessText(), m_accessPrompt));
    auto* open = new QPushButton(MaintenanceTexts::openFullDiskAccess(), m_accessPrompt);
    open->setObjectName(QStringLiteral("openFullDiskAccess"));
    promptLayout->addWidget(open, 0, Qt::AlignLeft);
    layout->addWidget(m_accessPrompt);

    m_optimize = new QPushButton(MaintenanceTexts::mailButton(), this);
    m_optimize->setObjectName(QStringLiteral("mailOptimize"));
    m_optimize->setEnabled(false); // until the databases have been found
    layout->addWidget(m_optimize, 0, Qt::AlignLeft);
    m_result = new OutcomeLine(QStringLiteral("mailResult"), this);
    layout->addWidget(m_result);

    connect(open, &QPushButton::clicked, this, [this] {
        QMessageBox::information(
            this, MaintenanceTexts::needsFullDiskAccess(), MaintenanceTexts::fullDiskAccessHowTo());
    });
    connect(m_optimize, &QPushButton::clicked, this, &MailCard::optimize);
    connect(&m_fullDisk, &FullDiskAccess::isGrantedChanged, this, &MailCard::showAccess);
    showAccess();
}

MailCard::~MailCard() = default;

void MailCard::showEvent(QShowEvent* event)
{
    QGroupBox::showEvent(event);
    lookForDatabases();
}

void MailCard::lookForDatabases()
{
    if (m_lookup || m_task || !m_fullDisk.isGranted())
        return;
    m_lookup = runInBackground(
        this, [home = QDir::homePath()] { return !MailOptimizer::findDatabases(home).isEmpty(); },
        [this](bool found) {
            m_lookup.reset();
            m_optimize->setEnabled(found);
            // A task that cannot run says why instead of failing when pressed.
            if (!found)
                m_result->showNote(QStringLiteral("Thunderbird isn’t set up in this home folder, so there is no "
                                                  "search database to compact. Optimize becomes available once "
                                                  "Thunderbird has a profile."));
            else if (m_result->kind() == OutcomeLine::Kind::note)
                m_result->clear();
            Q_EMIT availabilityShown();
        });
}

void MailCard::showAccess()
{
    const bool granted = m_fullDisk.isGranted();
    m_accessPrompt->setVisible(!granted);
    m_optimize->setVisible(granted);
}

void MailCard::optimize()
{
    if (m_task)
        return;
    m_optimize->setEnabled(false);
    m_task = runInBackground(
        this, [home = QDir::homePath()] { return MailOptimizer::optimize(home); },
        [this](TaskResult result) {
            m_task.reset();
            m_audit.recordAction(Maintenance::feature, MaintenanceTexts::mailTitle(),
                result.success ? result.message : QStringLiteral("Failed: ") + result.message);
            m_result->showOutcome(
                result.success ? OutcomeLine::Kind::success : OutcomeLine::Kind::failure, result.message);
            m_optimize->setEnabled(true);
        });
}
