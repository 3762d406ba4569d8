#pragma once

#include <QObject>
#include <QString>

// Whether Velloru can see the user's own folders. Outside a sandbox nothing stands in the way; inside a
// Flatpak sandbox the home folder shows only the app's own data until the user grants folder access.
class FullDiskAccess : public QObject {
    Q_OBJECT

public:
    // Where Velloru runs; only a sandbox can hide the user's folders.
    enum class Confinement { none, flatpak };
    static Confinement currentConfinement();

    explicit FullDiskAccess(
        QString home = {}, Confinement confinement = currentConfinement(), QObject* parent = nullptr);

    bool isGranted() const { return m_granted; }
    // Looks again; stores the result only when it changed.
    void probe();

    // The probe itself: whether `home` shows anything besides the sandbox's own ".var" folder.
    static bool homeIsVisible(const QString& home);

Q_SIGNALS:
    void isGrantedChanged(bool granted);

private:
    QString m_home;
    Confinement m_confinement;
    bool m_granted = false;
};
