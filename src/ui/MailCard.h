#pragma once

#include <QGroupBox>

#include <memory>
#include <thread>

class AuditLog;
class FullDiskAccess;
class OutcomeLine;
class QPushButton;

// The Maintenance page's Thunderbird card: compacts Thunderbird's message index without the helper. In a
// sandbox that hides the home folder it asks for Full Disk Access instead of offering the button.
class MailCard : public QGroupBox {
    Q_OBJECT

public:
    MailCard(AuditLog& audit, FullDiskAccess& fullDisk, QWidget* parent = nullptr);
    ~MailCard() override;

    OutcomeLine* result() const { return m_result; }
    QPushButton* optimizeButton() const { return m_optimize; }

Q_SIGNALS:
    // The card has looked for Thunderbird's databases and shows whether it can run.
    void availabilityShown();

protected:
    // Thunderbird may have been set up since the page was last shown: look again.
    void showEvent(QShowEvent* event) override;

private:
    void showAccess();
    void optimize();
    void lookForDatabases();

    AuditLog& m_audit;
    FullDiskAccess& m_fullDisk;
    QWidget* m_accessPrompt = nullptr;
    QPushButton* m_optimize = nullptr;
    OutcomeLine* m_result = nullptr;
    std::unique_ptr<std::jthread> m_task;   // the optimizer under way, if any
    std::unique_ptr<std::jthread> m_lookup; // looking for Thunderbird's databases
};
