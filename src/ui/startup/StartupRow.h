#pragma once

#include "startup/StartupItem.h"
#include "startup/StartupSwitch.h"

#include <QWidget>

class HelperManager;
class HelperService;
class OutcomeLine;
class QCheckBox;
class QPushButton;

// One startup item: its name, kind and health, the program it starts, the switch, Remove (or why it can't
// be removed), and the sentence that says how the last press went.
class StartupRow : public QWidget {
    Q_OBJECT

public:
    StartupRow(const StartupItem& item, HelperManager& helper, HelperService& service, QWidget* parent = nullptr);

    const StartupItem& item() const { return m_item; }
    QCheckBox* toggle() const { return m_switch; }
    QPushButton* removeButton() const { return m_remove; }
    OutcomeLine* outcome() const { return m_outcome; }
    // While a change runs anywhere on the page, no row starts another.
    void setBusy(bool busy);

Q_SIGNALS:
    void switchRequested(const QString& id, bool on);
    void removeRequested(const QString& id);

private:
    StartupItem m_item;
    QCheckBox* m_switch = nullptr;
    QPushButton* m_remove = nullptr;
    OutcomeLine* m_outcome = nullptr;
};
