#pragma once

#include <QWidget>

class PermissionCenter;
class QCheckBox;
class QLabel;
class QVBoxLayout;

// The full-window permissions step: what is granted, what is missing and what each buys.
class PermissionsStep : public QWidget {
    Q_OBJECT

public:
    explicit PermissionsStep(PermissionCenter& permissions, QWidget* parent = nullptr);

    QLabel* headingLabel() const { return m_heading; }
    QLabel* lostLabel() const { return m_lost; }

Q_SIGNALS:
    void finished();

private:
    void showChecklist();

    PermissionCenter& m_permissions;
    QLabel* m_heading = nullptr;
    QLabel* m_lost = nullptr;
    QVBoxLayout* m_rows = nullptr;
    QCheckBox* m_suppress = nullptr;
};
