#include "common/Log.h"

#include <algorithm>

Q_LOGGING_CATEGORY(lcVelloru, "velloru")

namespace {

void appendEscaped(QString& out, QChar c)
{
    switch (c.unicode()) {
    case '\n': out += QStringLiteral("\\n"); return;
    case '\r': out += QStringLiteral("\\r"); return;
    case '\t': out += QStringLiteral("\\t"); return;
    default: break;
    }
    const QChar::Category category = c.category();
    if (category == QChar::Other_Control || category == QChar::Separator_Line || category == QChar::Separator_Paragraph)
        out += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
    else
        out += c;
}

bool isPlain(QChar c)
{
    return c.isPrint() && !c.isSpace() && c != QLatin1Char('"') && c != QLatin1Char('\\') && c != QLatin1Char('=');
}

} // namespace

void logLine(const QString& message, LogSource source)
{
    QString line = source == LogSource::helper ? QStringLiteral("Velloru helper: ") : QStringLiteral("Velloru: ");
    line.reserve(line.size() + message.size());
    for (const QChar c : message)
        appendEscaped(line, c);
    qCInfo(lcVelloru).noquote() << line;
}

QString logValue(const QString& value)
{
    if (!value.isEmpty() && std::all_of(value.cbegin(), value.cend(), isPlain))
        return value;
    QString quoted = QStringLiteral("\"");
    for (const QChar c : value) {
        if (c == QLatin1Char('"') || c == QLatin1Char('\\'))
            quoted += QLatin1Char('\\');
        appendEscaped(quoted, c);
    }
    return quoted + QLatin1Char('"');
}
