#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>

// The "[Desktop Entry]" group of a freedesktop.org desktop entry file (applications, autostart entries).
class DesktopEntry {
public:
    // Nothing when the file cannot be read or has no "[Desktop Entry]" group.
    static std::optional<DesktopEntry> read(const QString& path);
    static std::optional<DesktopEntry> parse(const QByteArray& content);

    QString value(const QString& key) const { return m_values.value(key); }
    bool flag(const QString& key) const;
    // The key in the user's locale (Name[de_DE@euro], Name[de_DE], Name[de@euro], Name[de]), then plain.
    QString localizedValue(const QString& key, const QString& locale) const;

    // The words of the Exec line with quoting undone and field codes (%f, %U …) dropped.
    QStringList commandWords() const;
    // The program the Exec line starts, past any "env VAR=value" prefix; empty when there is none.
    QString program() const;

private:
    QHash<QString, QString> m_values;
};

// Splits an Exec-style command line into words, honouring double quotes and backslash escapes.
QStringList splitCommandLine(const QString& line);
