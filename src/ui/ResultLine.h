#pragma once

#include <QLabel>
#include <QString>

// Shows the outcome of a maintenance run on its card: a mark for success or failure, then the line.
inline void showResultLine(QLabel* label, bool success, const QString& line)
{
    label->setText((success ? QStringLiteral("✓ ") : QStringLiteral("⚠ ")) + line);
    label->setToolTip(success ? QStringLiteral("Done") : QStringLiteral("Failed"));
    label->show();
}
