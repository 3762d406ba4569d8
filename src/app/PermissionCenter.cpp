#include "app/PermissionCenter.h"

#include "app/UserDefaults.h"

#include <QPointer>
#include <QSettings>
#include <QTimer>

PermissionCenter::PermissionCenter(
    QSettings& defaults, QList<PermissionCheck> checks, QString ledgerKey, QString suppressKey, QObject* parent)
    : QObject(parent)
    , m_defaults(defaults)
    , m_checks(std::move(checks))
    , m_ledgerKey(std::move(ledgerKey))
    , m_suppressKey(std::move(suppressKey))
{
}

QList<Permission> PermissionCenter::checklist() const
{
    QList<Permission> permissions;
    for (const PermissionCheck& check : m_checks)
        permissions.append(check.permission);
    return permissions;
}

void PermissionCenter::setPresented(bool presented)
{
    if (presented == m_presented)
        return;
    m_presented = presented;
    Q_EMIT changed();
}

bool PermissionCenter::remindersSuppressed() const
{
    return m_defaults.value(m_suppressKey, false).toBool();
}

void PermissionCenter::setRemindersSuppressed(bool suppressed)
{
    m_defaults.setValue(m_suppressKey, suppressed);
}

void PermissionCenter::refresh()
{
    for (const PermissionCheck& check : m_checks)
        if (check.refresh)
            check.refresh();
    update();
}

void PermissionCenter::update()
{
    const QStringList stored = m_defaults.value(m_ledgerKey).toStringList();
    QStringList ledger = stored;
    const QStringList forcedMissing = m_defaults.value(DefaultsKey::debugMissingPermissions).toStringList();
    QList<Permission> missing, lost;
    for (const PermissionCheck& check : m_checks) {
        const QString raw = Permissions::rawValue(check.permission);
        const bool granted = check.isGranted();
        if (forcedMissing.contains(raw) || !granted) {
            missing.append(check.permission);
            if (ledger.contains(raw))
                lost.append(check.permission);
        }
        if (granted && !ledger.contains(raw))
            ledger.append(raw);
    }
    // Written only when it grew: QSettings writes an empty list as "@Invalid()", which no reader should meet.
    if (ledger != stored)
        m_defaults.setValue(m_ledgerKey, ledger);
    m_missing = missing;
    m_lost = lost;
    Q_EMIT changed();
}

void PermissionCenter::decideAtStartup(std::chrono::milliseconds delay, std::function<void(bool show)> answer)
{
    refresh();
    if (m_missing.isEmpty())
        return answer(false);
    if (m_lost.isEmpty())
        return answer(!remindersSuppressed());
    // Something that used to work is gone. A moment after launch some states settle (the helper answering,
    // the agent registering), so look once more before interrupting the user.
    QPointer<PermissionCenter> self(this);
    QTimer::singleShot(delay, this, [self, answer = std::move(answer)] {
        if (!self)
            return;
        self->refresh();
        answer(!self->m_lost.isEmpty());
    });
}

QString PermissionCenter::headingText() const
{
    if (m_missing.isEmpty())
        return QStringLiteral("Everything Velloru needs is granted. Nothing here will ask you again.");
    return QStringLiteral("Velloru asks for these once. Each one is a real Linux permission, and each buys the "
                          "specific features listed — nothing is collected, and nothing leaves your computer.");
}

std::optional<QString> PermissionCenter::lostSentence() const
{
    if (m_lost.isEmpty())
        return std::nullopt;
    QStringList titles;
    for (const Permission permission : m_lost)
        titles.append(Permissions::title(permission));
    QString joined = titles.last();
    if (titles.size() > 1)
        joined = titles.mid(0, titles.size() - 1).join(QStringLiteral(", ")) + QStringLiteral(" and ") + joined;
    const bool several = titles.size() > 1;
    return joined + (several ? QStringLiteral(" were") : QStringLiteral(" was"))
        + QStringLiteral(" granted before and ") + (several ? QStringLiteral("aren’t") : QStringLiteral("isn’t"))
        + QStringLiteral(" now — a system update, a restore or a privacy reset can do that silently. Switch ")
        + (several ? QStringLiteral("them") : QStringLiteral("it"))
        + QStringLiteral(" back on and Velloru is whole again.");
}
