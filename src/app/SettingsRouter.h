#pragma once

#include <QObject>
#include <QString>

// Picks the tab the settings window shows. Code that wants a given tab sets it before opening the window.
class SettingsRouter : public QObject {
    Q_OBJECT

public:
    enum class Tab { charts, services, about };

    Tab selected() const { return m_selected; }
    void select(Tab tab);

    static QString title(Tab tab);

Q_SIGNALS:
    void selectedChanged(SettingsRouter::Tab tab);

private:
    Tab m_selected = Tab::charts;
};
