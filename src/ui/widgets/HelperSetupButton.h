#pragma once

#include <QWidget>

class HelperManager;
class HelperService;
class OutcomeLine;
class QPushButton;

// The one button that installs the privileged helper, wherever a feature asks for it: "Set Up" while it
// is missing, "Approve" while it is installed but switched off, "Installing…" while an administrator is
// being asked, and nothing once it is ready. Why installing failed, and what to do about it, is said
// right under the button.
class HelperSetupButton : public QWidget {
    Q_OBJECT

public:
    HelperSetupButton(HelperManager& helper, HelperService& service, QWidget* parent = nullptr);

    QPushButton* button() const { return m_button; }
    // Whether the feature beside it needs the helper right now (Empty Trash with nothing in the Trash does
    // not); the button shows only while it is needed and the helper is not ready.
    void setNeeded(bool needed);
    OutcomeLine* outcome() const { return m_outcome; }

private:
    void showState();

    HelperManager& m_helper;
    HelperService& m_service;
    QPushButton* m_button = nullptr;
    OutcomeLine* m_outcome = nullptr;
    bool m_needed = true;
};
