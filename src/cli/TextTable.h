#pragma once

#include <QList>
#include <QStringList>
#include <QTextStream>

// A plain-text table with columns padded to their widest cell; right-aligned columns are for numbers.
class TextTable {
public:
    explicit TextTable(QStringList header, QList<bool> rightAligned = {});
    void addRow(QStringList cells);
    void print(QTextStream& out) const;

private:
    QStringList m_header;
    QList<bool> m_rightAligned;
    QList<QStringList> m_rows;
};
