#include "ui/SettingsWindow.h"

#include "app/SettingsRouter.h"
#include "app/UserDefaults.h"
#include "common/StoragePaths.h"
#include "helper/HelperManager.h"
#include "helper/HelperStatus.h"
#include "helper/HelperTexts.h"

#include "ui/widgets/HelperSetupButton.h"
#include "ui/widgets/WrappedLabel.h"

#include <QButtonGroup>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QRadioButton>
#include <QSettings>
#include <QTabWidget>
#include <QVBoxLayout>

SettingsWindow::SettingsWindow(
    SettingsRouter& router, QSettings& defaults, HelperManager& helper, HelperService& helperService, QWidget* parent)
    : QDialog(parent)
    , m_helper(helper)
    , m_helperService(helperService)
{
    setObjectName(QStringLiteral("settingsWindow"));
    setWindowTitle(QStringLiteral("Velloru Settings"));
    resize(520, 360);

    m_tabs = new QTabWidget(this);
    // Added in the order of SettingsRouter::Tab so an index is a tab.
    m_tabs->addTab(makeChartsTab(defaults), SettingsRouter::title(SettingsRouter::Tab::charts));
    m_tabs->addTab(makeServicesTab(helper), SettingsRouter::title(SettingsRouter::Tab::services));
    m_tabs->addTab(makeAboutTab(), SettingsRouter::title(SettingsRouter::Tab::about));
    m_tabs->setCurrentIndex(static_cast<int>(router.selected()));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->setObjectName(QStringLiteral("settingsButtons"));
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);

    connect(&router, &SettingsRouter::selectedChanged, m_tabs,
        [this](SettingsRouter::Tab tab) { m_tabs->setCurrentIndex(static_cast<int>(tab)); });
    connect(m_tabs, &QTabWidget::currentChanged, &router,
        [&router](int index) { router.select(static_cast<SettingsRouter::Tab>(index)); });
}

QWidget* SettingsWindow::makeChartsTab(QSettings& defaults)
{
    auto* tab = new QWidget(this);
    auto* layout = new QVBoxLayout(tab);
    layout->addWidget(new WrappedLabel(
        QStringLiteral("How Disk Usage draws the folders it measured. The chart changes as soon as you pick."), tab));
    const QString current = defaults.value(DefaultsKey::chartStyle, QStringLiteral("honeycomb")).toString();
    auto* group = new QButtonGroup(tab);
    const struct {
        QString value, title, description;
    } styles[] = {
        {QStringLiteral("honeycomb"), QStringLiteral("Honeycomb"),
            QStringLiteral("One cell per folder, its area the folder’s share of the space. Best for seeing at a "
                           "glance which few folders take the most.")},
        {QStringLiteral("rail"), QStringLiteral("Rail"),
            QStringLiteral("One bar per folder, largest first, with its name and size beside it. Best for reading "
                           "exact figures and small folders.")},
    };
    for (const auto& style : styles) {
        auto* choice = new QRadioButton(style.title, tab);
        choice->setObjectName(QStringLiteral("chartStyle-") + style.value);
        choice->setChecked(style.value == current);
        group->addButton(choice);
        layout->addWidget(choice);
        auto* description = new WrappedLabel(style.description, tab);
        description->setContentsMargins(24, 0, 0, 8);
        layout->addWidget(description);
        connect(choice, &QRadioButton::toggled, this, [this, &defaults, value = style.value](bool on) {
            if (!on)
                return;
            defaults.setValue(DefaultsKey::chartStyle, value);
            Q_EMIT chartStyleChanged();
        });
    }
    layout->addStretch();
    return tab;
}

void SettingsWindow::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    m_helper.refreshState(m_helperService);
}

QWidget* SettingsWindow::makeServicesTab(HelperManager& helper)
{
    auto* tab = new QWidget(this);
    auto* form = new QFormLayout(tab);
    auto* status = new WrappedLabel({}, QStringLiteral("helperStatus"), tab);
    status->setText(helperStatusText(helper));
    connect(&helper, &HelperManager::changed, status, [status, &helper] { status->setText(helperStatusText(helper)); });
    form->addRow(HelperTexts::heading() + QLatin1Char(':'), status);
    form->addRow(QString(), new WrappedLabel(HelperTexts::explanation(), tab));
    form->addRow(QString(), new HelperSetupButton(helper, m_helperService, tab));
    // The mount agent reports its state here once it is part of Velloru.
    form->addRow(QStringLiteral("Mount Agent:"),
        new WrappedLabel(QStringLiteral("Not part of this version of Velloru yet."), tab));
    return tab;
}

QWidget* SettingsWindow::makeAboutTab()
{
    auto* tab = new QWidget(this);
    auto* layout = new QVBoxLayout(tab);
    auto* name = new QLabel(QStringLiteral("<b>Velloru</b> %1").arg(QStringLiteral(VELLORU_VERSION)), tab);
    layout->addWidget(name);
    layout->addWidget(new WrappedLabel(QStringLiteral("A desktop maintenance suite. Everything it removes goes to the "
                                                      "Trash, and everything it does is written to the Activity log."),
        tab));
    auto* folder = new WrappedLabel(QStringLiteral("Data folder: %1").arg(StoragePaths::dataFolder()), tab);
    folder->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(folder);
    layout->addStretch();
    return tab;
}
