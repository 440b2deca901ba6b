#include "templatestringhelper.h"

#include "domain/bankaccount.h"
#include "domain/constants.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoicetype.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"

#include <QDir>
#include <QHash>
#include <QLocale>
#include <QUrl>

const QRegularExpression TemplateStringHelper::variableRegex1(
    QStringLiteral("\\{\\{\\s?([\\w\\d/]+?)\\s?\\}\\}"));
const QRegularExpression TemplateStringHelper::variableRegex2(
    QStringLiteral("\\{\\s?(.{1,4})\\s?\\}"));

TemplateStringHelper::TemplateStringHelper(
    const Settings* settings, const QList<BankAccount*>& bankAccounts)
    : m_settings(settings)
    , m_bankAccounts(bankAccounts)
    , m_amountFormat(Constants::totalAmountFractionDigits, Constants::totalAmountMinFractionDigits)
    , m_percentageFormat(
          Constants::percentageFractionDigits, Constants::percentageMinFractionDigits)
{
}

QString TemplateStringHelper::documentTitle(const Invoice* invoice, int printType)
{
    // Below a reminder the invoice's own type names the document.
    const int type = printType < InvoiceType::Reminder ? invoice->type : printType;
    return InvoiceType::name(InvoiceType::isValid(type) ? type : InvoiceType::Invoice);
}

QString TemplateStringHelper::substituteShortVariables(
    const QString& text, const Invoice* invoice, const Customer* customer, int printType) const
{
    if (!invoice || !customer)
        return text;
    QString result;
    bool dollar = false;
    for (const QChar c : text) {
        if (!dollar) {
            if (c == QLatin1Char('$'))
                dollar = true;
            else
                result += c;
            continue;
        }
        dollar = false;
        switch (c.unicode()) {
        case '$':
            result += QLatin1Char('$');
            break;
        case 'H':
            result += documentTitle(invoice, printType);
            break;
        case 'h':
            result += toAscii(documentTitle(invoice, printType));
            break;
        case 'I':
        case 'i':
            result += QString::number(invoice->number);
            break;
        case 'J':
        case 'j':
            result += QString::number(customer->number);
            break;
        case 'N':
            result += removeInvalidCharacters(customer->name);
            break;
        case 'n':
            result += toAscii(customer->name);
            break;
        case 'S':
            result += removeInvalidCharacters(customer->streetName);
            break;
        case 's':
            result += toAscii(customer->streetName);
            break;
        case 'P':
        case 'p':
            result += removeInvalidCharacters(customer->postCode);
            break;
        case 'T':
            result += removeInvalidCharacters(customer->townName);
            break;
        case 't':
            result += toAscii(customer->townName);
            break;
        case 'E':
            result += removeInvalidCharacters(customer->emailAddress);
            break;
        case 'e':
            result += toAscii(customer->emailAddress);
            break;
        case 'V':
        case 'v':
            result += removeInvalidCharacters(customer->vatNumber);
            break;
        case 'R':
        case 'r':
            result += invoice->referenceNumber;
            break;
        default:
            break; // an unknown code vanishes with its dollar
        }
    }
    return result;
}

QString TemplateStringHelper::substituteVariables(
    const QString& text, const Invoice* invoice, const Customer* customer) const
{
    QString first;
    qsizetype position = 0;
    QRegularExpressionMatchIterator it = variableRegex1.globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        first += QStringView(text).mid(position, match.capturedStart() - position);
        QString value = valueForVariable(match.captured(1), invoice, customer);
        escapeString(value);
        first += value;
        position = match.capturedEnd();
    }
    first += QStringView(text).mid(position);

    // Runs over the inserted values too; these are not escaped.
    QString result;
    position = 0;
    it = variableRegex2.globalMatch(first);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        result += QStringView(first).mid(position, match.capturedStart() - position);
        result += valueForShortVariable(match.captured(1).trimmed(), invoice, customer);
        position = match.capturedEnd();
    }
    result += QStringView(first).mid(position);
    return result;
}

QString TemplateStringHelper::valueForVariable(
    const QString& name, const Invoice* invoice, const Customer* customer) const
{
    const auto extra = m_variables.constFind(name);
    if (extra != m_variables.constEnd())
        return extra.value();
    if (invoice) {
        const QString value = invoiceValue(name, invoice);
        if (!value.isNull())
            return value;
    }
    if (customer)
        return customerValue(name, customer);
    return QString();
}

QString TemplateStringHelper::invoiceValue(const QString& name, const Invoice* invoice) const
{
    // Every known name gives a non-null text, so that an empty value does not
    // fall through to the customer names.
    auto text = [](const QString& value) { return value.isNull() ? QLatin1String("") : value; };
    auto shortDate = [&](const QDate& date) {
        return text(QLocale::system().toString(date, QLocale::ShortFormat));
    };

    if (name == QLatin1String("number"))
        return QString::number(invoice->number);
    if (name == QLatin1String("date"))
        return shortDate(invoice->date);
    if (name == QLatin1String("paymentTerms"))
        return text(invoice->paymentTerms);
    if (name == QLatin1String("delivery"))
        return text(invoice->delivery);
    if (name == QLatin1String("buyerRef"))
        return text(invoice->buyerRef);
    if (name == QLatin1String("sellerRef"))
        return text(invoice->sellerRef);
    if (name == QLatin1String("interestOnArrears"))
        return m_percentageFormat.format(invoice->interestOnArrears);
    if (name == QLatin1String("dueDate"))
        return shortDate(invoice->dueDate);
    if (name == QLatin1String("totalAmount"))
        return m_amountFormat.format(invoice->totalAmount);
    if (name == QLatin1String("balance"))
        return m_amountFormat.format(invoice->balance);
    if (name == QLatin1String("periodForComplaints")) {
        return text(m_settings ? m_settings->property(SettingsKeys::periodForComplaints).toString()
                               : QString());
    }
    if (name == QLatin1String("referenceNumber"))
        return text(Invoice::formatReferenceNumber(invoice->referenceNumber));
    if (name == QLatin1String("referenceNumberRaw"))
        return text(invoice->referenceNumber);
    if (name == QLatin1String("referenceNumberSpy"))
        return text(Invoice::formatSpyReferenceNumber(invoice->referenceNumber));
    if (name == QLatin1String("referenceNumberRf"))
        return text(Invoice::formatRfReferenceNumber(
            Invoice::referenceNumberToRf(invoice->referenceNumber)));
    if (name == QLatin1String("referenceNumberRfRaw"))
        return text(Invoice::referenceNumberToRf(invoice->referenceNumber));
    if (name == QLatin1String("barcode") || name == QLatin1String("barcode4"))
        return text(createBarcode(invoice, 4, false));
    if (name == QLatin1String("barcode5"))
        return text(createBarcode(invoice, 5, false));
    if (name == QLatin1String("balanceBarcode") || name == QLatin1String("balanceBarcode4"))
        return text(createBarcode(invoice, 4, true));
    if (name == QLatin1String("balanceBarcode5"))
        return text(createBarcode(invoice, 5, true));
    if (name == QLatin1String("noticeText1"))
        return text(invoice->property(QStringLiteral("t1")).toString());
    if (name == QLatin1String("noticeText2"))
        return text(invoice->property(QStringLiteral("t2")).toString());
    return QString();
}

QString TemplateStringHelper::customerValue(const QString& name, const Customer* customer)
{
    using Value = QString (*)(const Customer*);
    static const QHash<QString, Value> values {
        { QStringLiteral("customer/number"),
            [](const Customer* c) { return QString::number(c->number); } },
        { QStringLiteral("customer/name"), [](const Customer* c) { return c->name; } },
        { QStringLiteral("customer/streetName"), [](const Customer* c) { return c->streetName; } },
        { QStringLiteral("customer/postCode"), [](const Customer* c) { return c->postCode; } },
        { QStringLiteral("customer/townName"), [](const Customer* c) { return c->townName; } },
        { QStringLiteral("customer/country"), [](const Customer* c) { return c->country; } },
        { QStringLiteral("customer/contact"), [](const Customer* c) { return c->contact; } },
        { QStringLiteral("customer/vatNumber"), [](const Customer* c) { return c->vatNumber; } },
        { QStringLiteral("customer/emailAddress"),
            [](const Customer* c) { return c->emailAddress; } },
        // Ready for a mailto: address; "@" stays readable.
        { QStringLiteral("customer/emailAddressEncoded"),
            [](const Customer* c) {
                return QString::fromLatin1(QUrl::toPercentEncoding(c->emailAddress, "@"));
            } },
        { QStringLiteral("customer/phoneNumber"),
            [](const Customer* c) { return c->phoneNumber; } },
        { QStringLiteral("customer/custom1"),
            [](const Customer* c) { return c->property(QStringLiteral("c1")).toString(); } },
        { QStringLiteral("customer/custom2"),
            [](const Customer* c) { return c->property(QStringLiteral("c2")).toString(); } },
    };
    const Value value = values.value(name, nullptr);
    if (!value)
        return QString();
    // A known name is never null, so it is told apart from an unknown one.
    const QString result = value(customer);
    return result.isNull() ? QLatin1String("") : result;
}

QString TemplateStringHelper::valueForShortVariable(
    const QString& code, const Invoice* invoice, const Customer* customer) const
{
    if (code.isEmpty())
        return QString();
    const QChar letter = code.at(0);
    QString rest = code.mid(1);
    QChar mark = QLatin1Char('>');
    int width = 0;
    if (!rest.isEmpty()) {
        const QChar last = rest.back();
        if (!last.isDigit()) {
            mark = last;
            rest.chop(1);
        }
        if (!rest.isEmpty()) {
            bool ok = false;
            width = rest.toInt(&ok);
            if (!ok)
                return QString();
        }
    }

    QString value;
    if (letter == QLatin1Char('I')) {
        if (!invoice)
            return QString();
        value = QString::number(invoice->number);
    } else if (letter == QLatin1Char('C')) {
        if (!customer)
            return QString();
        value = QString::number(customer->number);
    } else {
        return QString();
    }

    if (mark == QLatin1Char('>'))
        return value.rightJustified(width, QLatin1Char('0'));
    if (mark == QLatin1Char('<'))
        return value.leftJustified(width, QLatin1Char('0'));
    return value;
}

void TemplateStringHelper::appendVariable(const QString& name, const QString& value)
{
    m_variables.insert(name, value);
}

void TemplateStringHelper::clearVariables()
{
    m_variables.clear();
}

void TemplateStringHelper::escapeString(QString& text) const
{
    if (!m_escapeEnabled)
        return;
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    text.replace(QLatin1Char('"'), QLatin1String("\\\""));
}

QString TemplateStringHelper::createBarcode(
    const Invoice* invoice, int version, bool useBalance) const
{
    if (!invoice)
        return QString();
    for (const BankAccount* account : m_bankAccounts) {
        if (account && account->visible && !account->deleted)
            return invoice->barcode(account, version, useBalance);
    }
    return QString();
}

QString TemplateStringHelper::removeInvalidCharacters(const QString& text)
{
    static const QString invalid = QStringLiteral("|\\!?*<\":>+[]/");
    QString result;
    result.reserve(text.size());
    for (const QChar c : text) {
        if (!invalid.contains(c))
            result += c;
    }
    return result;
}

QString TemplateStringHelper::toAscii(const QString& text)
{
    const QString decomposed = text.toLower().normalized(QString::NormalizationForm_D);
    QString result;
    QChar last = QLatin1Char('-');
    for (const QChar c : decomposed) {
        const bool asciiLetterOrDigit = (c >= QLatin1Char('a') && c <= QLatin1Char('z'))
            || (c >= QLatin1Char('0') && c <= QLatin1Char('9'));
        if (asciiLetterOrDigit || (c.unicode() > 127 && c.isDigit())) {
            result += c;
            last = c;
        } else if (c == QLatin1Char(' ') || c == QLatin1Char('-')) {
            if (last != QLatin1Char('-')) {
                result += QLatin1Char('-');
                last = QLatin1Char('-');
            }
        }
    }
    if (result.endsWith(QLatin1Char('-')))
        result.chop(1);
    return result;
}

QFileInfo TemplateStringHelper::addSuffixToFilename(const QFileInfo& fileInfo)
{
    const QDir dir = fileInfo.dir();
    const QString base = fileInfo.completeBaseName();
    const QString suffix = fileInfo.suffix();
    for (int i = 1;; ++i) {
        const QFileInfo candidate(
            dir.filePath(QStringLiteral("%1-%2.%3").arg(base, QString::number(i), suffix)));
        if (!candidate.exists())
            return candidate;
    }
}
