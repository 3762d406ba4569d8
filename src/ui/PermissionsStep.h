#pragma once

#include "app/Permission.h"

#include <QMap>
#include <QWidget>

class HelperManager;
class HelperService;
class PermissionCenter;
class QCheckBox;
class QLabel;

// The full-window permissions step: what is granted, what is missing and what each buys, with the button
// that grants what Velloru can grant itself (the helper).
class PermissionsStep : public QWidget {
    Q_OBJECT

public:
    PermissionsStep(
        PermissionCenter& permissions, HelperManager& helper, HelperService& helperService, QWidget* parent = nullptr);

    QLabel* headingLabel() const { return m_heading; }
    QLabel* lostLabel() const { return m_lost; }

Q_SIGNALS:
    void finished();

private:
    void showChecklist();

    PermissionCenter& m_permissions;
    QLabel* m_heading = nullptr;
    QLabel* m_lost = nullptr;
    QMap<Permission, QLabel*> m_rows;
    QCheckBox* m_suppress = nullptr;
};
