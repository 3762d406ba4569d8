#include "cli/TextTable.h"

TextTable::TextTable(QStringList header, QList<bool> rightAligned)
    : m_header(std::move(header))
    , m_rightAligned(std::move(rightAligned))
{
    m_rightAligned.resize(m_header.size());
}

void TextTable::addRow(QStringList cells)
{
    cells.resize(m_header.size());
    m_rows.append(std::move(cells));
}

void TextTable::print(QTextStream& out) const
{
    QList<qsizetype> widths;
    for (const QString& title : m_header)
        widths.append(title.size());
    for (const QStringList& row : m_rows)
        for (qsizetype i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());

    const auto printRow = [&](const QStringList& cells) {
        QString line;
        for (qsizetype i = 0; i < cells.size(); ++i) {
            const bool last = i + 1 == cells.size();
            if (m_rightAligned[i])
                line += cells[i].rightJustified(widths[i]);
            else
                line += last ? cells[i] : cells[i].leftJustified(widths[i]);
            if (!last)
                line += QStringLiteral("  ");
        }
        out << line << '\n';
    };
    printRow(m_header);
    for (const QStringList& row : m_rows)
        printRow(row);
}
