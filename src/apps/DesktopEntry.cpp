#include "apps/DesktopEntry.h"

#include <QFile>

std::optional<DesktopEntry> DesktopEntry::read(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    // Real entries are a few kilobytes; anything far larger is not one.
    return parse(file.read(1024 * 1024));
}

std::optional<DesktopEntry> DesktopEntry::parse(const QByteArray& content)
{
    DesktopEntry entry;
    bool inGroup = false;
    bool sawGroup = false;
    for (const QByteArray& rawLine : content.split('\n')) {
        const QByteArray line = rawLine.trimmed();
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        if (line.startsWith('[')) {
            inGroup = line == "[Desktop Entry]";
            sawGroup = sawGroup || inGroup;
            continue;
        }
        if (!inGroup)
            continue;
        const qsizetype equals = line.indexOf('=');
        if (equals <= 0)
            continue;
        const QString key = QString::fromUtf8(line.left(equals).trimmed());
        // The first occurrence of a key counts, as desktop environments read it.
        if (!entry.m_values.contains(key))
            entry.m_values.insert(key, QString::fromUtf8(line.mid(equals + 1).trimmed()));
    }
    if (!sawGroup)
        return std::nullopt;
    return entry;
}

bool DesktopEntry::flag(const QString& key) const
{
    return m_values.value(key).compare(QLatin1String("true"), Qt::CaseInsensitive) == 0;
}

QString DesktopEntry::localizedValue(const QString& key, const QString& locale) const
{
    // A locale reads lang_COUNTRY.ENCODING@MODIFIER; the encoding never takes part in the match.
    QString lang = locale;
    QString modifier;
    if (const qsizetype at = lang.indexOf(QLatin1Char('@')); at >= 0) {
        modifier = lang.mid(at + 1);
        lang.truncate(at);
    }
    if (const qsizetype dot = lang.indexOf(QLatin1Char('.')); dot >= 0)
        lang.truncate(dot);
    QString country;
    if (const qsizetype underscore = lang.indexOf(QLatin1Char('_')); underscore >= 0) {
        country = lang.mid(underscore + 1);
        lang.truncate(underscore);
    }
    QStringList candidates;
    if (!country.isEmpty() && !modifier.isEmpty())
        candidates << lang + QLatin1Char('_') + country + QLatin1Char('@') + modifier;
    if (!country.isEmpty())
        candidates << lang + QLatin1Char('_') + country;
    if (!modifier.isEmpty())
        candidates << lang + QLatin1Char('@') + modifier;
    if (!lang.isEmpty())
        candidates << lang;
    for (const QString& candidate : candidates) {
        const QString value = m_values.value(key + QLatin1Char('[') + candidate + QLatin1Char(']'));
        if (!value.isEmpty())
            return value;
    }
    return m_values.value(key);
}

QStringList splitCommandLine(const QString& line)
{
    QStringList words;
    QString word;
    bool inWord = false;
    bool quoted = false;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar c = line[i];
        if (c == QLatin1Char('\\') && i + 1 < line.size()) {
            word += line[++i];
            inWord = true;
        } else if (c == QLatin1Char('"')) {
            quoted = !quoted;
            inWord = true;
        } else if (c.isSpace() && !quoted) {
            if (inWord)
                words << word;
            word.clear();
            inWord = false;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (inWord)
        words << word;
    return words;
}

QStringList DesktopEntry::commandWords() const
{
    QStringList words;
    for (const QString& word : splitCommandLine(m_values.value(QStringLiteral("Exec")))) {
        // A whole-word field code stands for files or URLs that the launcher fills in.
        if (word.size() == 2 && word.startsWith(QLatin1Char('%')))
            continue;
        words << word;
    }
    return words;
}

QString DesktopEntry::program() const
{
    const QStringList words = commandWords();
    qsizetype i = 0;
    if (i < words.size() && (words[i] == QLatin1String("env") || words[i].endsWith(QLatin1String("/env")))) {
        ++i;
        while (i < words.size() && (words[i].contains(QLatin1Char('=')) || words[i].startsWith(QLatin1Char('-')))) {
            // "-u NAME" unsets a variable: the name is not the program.
            const bool takesName = words[i] == QLatin1String("-u") || words[i] == QLatin1String("--unset");
            i += takesName ? 2 : 1;
        }
    }
    return i < words.size() ? words[i] : QString();
}
