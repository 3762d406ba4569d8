#pragma once

#include "app/Permission.h"
#include "app/StartupFlow.h"

#include <QList>
#include <QObject>

#include <functional>

class QSettings;

// How one permission is checked: refresh asks its owner to look again, isGranted reads the answer.
struct PermissionCheck {
    Permission permission;
    std::function<void()> refresh;
    std::function<bool()> isGranted;
};

// The permission checklist: which permissions are missing now, which of those were granted before (the
// ledger only grows), and whether the permissions step must be shown at start-up. Main thread only.
class PermissionCenter : public QObject, public PermissionGate {
    Q_OBJECT

public:
    // `checks` lists only the permissions that exist in this edition, in checklist order.
    PermissionCenter(QSettings& defaults, QList<PermissionCheck> checks, QString ledgerKey, QString suppressKey,
        QObject* parent = nullptr);

    QList<Permission> checklist() const;
    const QList<Permission>& missing() const { return m_missing; }
    const QList<Permission>& lost() const { return m_lost; }
    bool isPresented() const { return m_presented; }
    void setPresented(bool presented);
    const QString& ledgerKey() const { return m_ledgerKey; }
    const QString& suppressKey() const { return m_suppressKey; }

    bool remindersSuppressed() const;
    void setRemindersSuppressed(bool suppressed);

    void refresh() override;
    // Reads every answer again without asking the owners to look again: for when an owner announced a change
    // itself (the helper was installed).
    void update();
    void decideAtStartup(std::chrono::milliseconds delay, std::function<void(bool show)> answer) override;

    // The text at the top of the permissions step.
    QString headingText() const;
    // The sentence about permissions that used to be granted; nothing when none was lost.
    std::optional<QString> lostSentence() const;

Q_SIGNALS:
    void changed();

private:
    QSettings& m_defaults;
    QList<PermissionCheck> m_checks;
    QString m_ledgerKey;
    QString m_suppressKey;
    QList<Permission> m_missing;
    QList<Permission> m_lost;
    bool m_presented = false;
};
