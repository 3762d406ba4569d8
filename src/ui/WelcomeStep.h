#pragma once

#include <QWidget>

// The full-window step shown on the first launch only.
class WelcomeStep : public QWidget {
    Q_OBJECT

public:
    explicit WelcomeStep(QWidget* parent = nullptr);

Q_SIGNALS:
    void finished();
};
