#ifndef TEMPLATESTRINGHELPER_H
#define TEMPLATESTRINGHELPER_H

#include "domain/decimalformat.h"

#include <QFileInfo>
#include <QList>
#include <QMap>
#include <QRegularExpression>
#include <QString>

class BankAccount;
class Customer;
class Invoice;
class Settings;

// Expands the user-editable templates: "$" codes in file names ("lasku-$i-$n.pdf"),
// double-brace placeholders in texts ("{{ customer/name }}") and single-brace
// short codes for zero-padded numbers ("{I}00" of reference numbers).
class TemplateStringHelper
{
public:
    // settings gives the company's values ("periodForComplaints"), bankAccounts
    // the account of the bank barcode; both may be missing.
    explicit TemplateStringHelper(
        const Settings* settings = nullptr, const QList<BankAccount*>& bankAccounts = {});

    // printType chooses the document title of $H/$h: the invoice's own type
    // below 3, else 3 reminder, 4 receipt, 5 delivery note.
    QString substituteShortVariables(
        const QString& text, const Invoice* invoice, const Customer* customer, int printType) const;
    // Double-brace placeholders first (values escaped when enabled), then
    // single-brace short codes over the result.
    QString substituteVariables(
        const QString& text, const Invoice* invoice, const Customer* customer) const;
    // A null string for an unknown name.
    QString valueForVariable(
        const QString& name, const Invoice* invoice, const Customer* customer) const;
    // "I" or "C", an optional width and an optional alignment mark ("<" pads
    // on the right, ">" on the left); a null string when unknown or malformed.
    QString valueForShortVariable(
        const QString& code, const Invoice* invoice, const Customer* customer) const;

    // Extra variables win over every built-in name.
    void appendVariable(const QString& name, const QString& value);
    void clearVariables();

    bool escapeEnabled() const { return m_escapeEnabled; }
    void setEscapeEnabled(bool enabled) { m_escapeEnabled = enabled; }
    // Makes a value safe between double quotes of a command line.
    void escapeString(QString& text) const;

    // The bank barcode with the first account printed on invoices; empty
    // when there is none.
    QString createBarcode(const Invoice* invoice, int version, bool useBalance) const;

    static QString removeInvalidCharacters(const QString& text);
    static QString toAscii(const QString& text);
    // The first free "dir/base-N.suffix", N = 1, 2, ...
    static QFileInfo addSuffixToFilename(const QFileInfo& fileInfo);

    static const QRegularExpression variableRegex1;
    static const QRegularExpression variableRegex2;

private:
    QString invoiceValue(const QString& name, const Invoice* invoice) const;
    static QString customerValue(const QString& name, const Customer* customer);
    static QString documentTitle(const Invoice* invoice, int printType);

    const Settings* m_settings;
    QList<BankAccount*> m_bankAccounts;
    DecimalFormat m_amountFormat;
    DecimalFormat m_percentageFormat;
    QMap<QString, QString> m_variables;
    bool m_escapeEnabled = false;
};

#endif // TEMPLATESTRINGHELPER_H
