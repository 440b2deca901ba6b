#ifndef CSVWRITER_H
#define CSVWRITER_H

#include <QString>
#include <QStringList>

// Builds CSV text for spreadsheets; ListReportFormat::save() writes it to a
// file. Fields holding the delimiter, quotes or line breaks are quoted. Text cells that a
// spreadsheet would run as a formula (=, +, -, or @ first, perhaps after tabs or carriage
// returns) get an apostrophe in front. Numbers, negative amounts and telephone numbers such as
// "+358 40 123 4567" are written as they are, so that they stay numbers and readable.
class CsvWriter
{
public:
    explicit CsvWriter(const QString& delimiter = QStringLiteral(";"));

    QString delimiter() const { return m_delimiter; }
    void addText(const QString& text);
    void addNumber(const QString& number);
    void endRow();
    // Adds every text with addText() and ends the row.
    void addRow(const QStringList& texts);

    // Rows end with CR LF.
    QString text() const { return m_text; }

    static QString neutralizeFormula(const QString& text);
    static QString quoteField(const QString& field, const QString& delimiter);

private:
    void addField(const QString& field);

    QString m_delimiter;
    QString m_text;
    bool m_rowStarted = false;
};

#endif // CSVWRITER_H
