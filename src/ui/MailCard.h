#pragma once

#include <QGroupBox>

#include <memory>
#include <thread>

class AuditLog;
class FullDiskAccess;
class QLabel;
class QPushButton;

// The Maintenance page's Thunderbird card: compacts Thunderbird's message index without the helper. In a
// sandbox that hides the home folder it asks for Full Disk Access instead of offering the button.
class MailCard : public QGroupBox {
    Q_OBJECT

public:
    MailCard(AuditLog& audit, FullDiskAccess& fullDisk, QWidget* parent = nullptr);
    ~MailCard() override;

private:
    void showAccess();
    void optimize();

    AuditLog& m_audit;
    FullDiskAccess& m_fullDisk;
    QWidget* m_accessPrompt = nullptr;
    QPushButton* m_optimize = nullptr;
    QLabel* m_result = nullptr;
    std::unique_ptr<std::jthread> m_task; // the optimizer under way, if any
};
