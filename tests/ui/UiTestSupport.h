#pragma once

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

// Saves a picture of a widget under the build folder, so a person can look at what the test saw.
inline QString saveScreenshot(QWidget& widget, const QString& name)
{
    const QString folder = QCoreApplication::applicationDirPath() + QStringLiteral("/screenshots");
    QDir().mkpath(folder);
    const QString path = folder + QLatin1Char('/') + name + QStringLiteral(".png");
    widget.grab().save(path);
    return path;
}

// Answers the next modal message box by clicking the button with this text.
inline void answerNextMessageBox(const QString& buttonText)
{
    QTimer::singleShot(0, [buttonText] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return answerNextMessageBox(buttonText);
        for (QAbstractButton* button : box->buttons())
            if (button->text() == buttonText)
                return button->click();
    });
}
