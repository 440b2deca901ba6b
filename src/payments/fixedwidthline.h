#ifndef FIXEDWIDTHLINE_H
#define FIXEDWIDTHLINE_H

#include <QCoreApplication>
#include <QDate>
#include <QString>
#include <QTime>

class QTextStream;

// One line of a fixed-width bank file and the field conversions both bank
// formats share: a read position that each field advances by its width, and
// the first failing field's "Invalid %1: %2" message.
class FixedWidthLine
{
    Q_DECLARE_TR_FUNCTIONS(FixedWidthLine)

public:
    // Reads the next non-empty line of at most maxLength characters. A longer
    // line is read to its end without keeping it: the line is empty and
    // tooLongLength() tells its length. False at the end of input.
    bool read(QTextStream* stream, int maxLength);

    const QString& text() const { return m_text; }
    qsizetype length() const { return m_tooLongLength > 0 ? m_tooLongLength : m_text.size(); }
    bool hasError() const { return m_error; }
    QString errorString() const { return m_errorString; }

    // A field that runs past the end of the line is an error with its label.
    QChar readChar(const QString& label);
    QString readString(int width, const QString& label);
    // A decimal integer that fits 32 signed bits, else an error.
    int readNumber(int width, const QString& label, bool& ok);
    // YYMMDD in this century; "000000" is no date and no error.
    QDate readDate(const QString& label, bool& ok);
    // HHMM.
    QTime readTime(const QString& label, bool& ok);
    void skip(int width) { m_position += width; }
    // Raises the error "Invalid label: value"; returns false.
    bool fail(const QString& label, const QString& value);

    static QString buildErrorMessage(const QString& label, const QString& value);
    // Bank files pad references with zeros on the left.
    static QString withoutLeadingZeros(const QString& text);

private:
    QString m_text;
    qsizetype m_tooLongLength = 0;
    int m_position = 0;
    bool m_error = false;
    QString m_errorString;
};

#endif // FIXEDWIDTHLINE_H
