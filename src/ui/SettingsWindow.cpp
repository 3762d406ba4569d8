#include "ui/SettingsWindow.h"

#include "app/SettingsRouter.h"
#include "app/UserDefaults.h"
#include "common/StoragePaths.h"
#include "helper/HelperManager.h"
#include "helper/HelperStatus.h"
#include "helper/HelperTexts.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
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

    connect(&router, &SettingsRouter::selectedChanged, m_tabs,
        [this](SettingsRouter::Tab tab) { m_tabs->setCurrentIndex(static_cast<int>(tab)); });
    connect(m_tabs, &QTabWidget::currentChanged, &router,
        [&router](int index) { router.select(static_cast<SettingsRouter::Tab>(index)); });
}

QWidget* SettingsWindow::makeChartsTab(QSettings& defaults)
{
    auto* tab = new QWidget(this);
    auto* form = new QFormLayout(tab);
    auto* style = new QComboBox(tab);
    style->setObjectName(QStringLiteral("chartStyle"));
    style->addItem(QStringLiteral("Honeycomb"), QStringLiteral("honeycomb"));
    style->addItem(QStringLiteral("Rail"), QStringLiteral("rail"));
    const int current = style->findData(defaults.value(DefaultsKey::chartStyle, QStringLiteral("honeycomb")));
    style->setCurrentIndex(std::max(current, 0));
    form->addRow(QStringLiteral("Disk usage chart:"), style);
    connect(style, &QComboBox::currentIndexChanged, tab,
        [style, &defaults] { defaults.setValue(DefaultsKey::chartStyle, style->currentData()); });
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
    auto* status = new QLabel(tab);
    status->setObjectName(QStringLiteral("helperStatus"));
    status->setWordWrap(true);
    status->setText(helperStatusText(helper));
    connect(&helper, &HelperManager::changed, status, [status, &helper] { status->setText(helperStatusText(helper)); });
    form->addRow(HelperTexts::heading() + QLatin1Char(':'), status);
    auto* explanation = new QLabel(HelperTexts::explanation(), tab);
    explanation->setWordWrap(true);
    form->addRow(QString(), explanation);
    // The mount agent reports its state here once it is part of Velloru.
    form->addRow(
        QStringLiteral("Mount Agent:"), new QLabel(QStringLiteral("Not part of this version of Velloru yet."), tab));
    return tab;
}

QWidget* SettingsWindow::makeAboutTab()
{
    auto* tab = new QWidget(this);
    auto* layout = new QVBoxLayout(tab);
    auto* name = new QLabel(QStringLiteral("<b>Velloru</b> %1").arg(QStringLiteral(VELLORU_VERSION)), tab);
    layout->addWidget(name);
    auto* text = new QLabel(QStringLiteral("A desktop maintenance suite. Everything it removes goes to the "
                                           "Trash, and everything it does is written to the Activity log."),
        tab);
    text->setWordWrap(true);
    layout->addWidget(text);
    auto* folder = new QLabel(QStringLiteral("Data folder: %1").arg(StoragePaths::dataFolder()), tab);
    folder->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(folder);
    layout->addStretch();
    return tab;
}
