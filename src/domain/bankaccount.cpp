#include "bankaccount.h"

bool BankAccount::isValidIban(const QString& iban)
{
    QString compact = iban.toUpper();
    compact.remove(QLatin1Char(' '));
    if (compact.size() < 15 || compact.size() > 34)
        return false;
    // Finnish accounts are always 18 characters long.
    if (compact.startsWith(QLatin1String("FI")) && compact.size() != 18)
        return false;
    for (qsizetype i = 0; i < compact.size(); ++i) {
        const QChar c = compact.at(i);
        const bool letter = c >= QLatin1Char('A') && c <= QLatin1Char('Z');
        const bool digit = c >= QLatin1Char('0') && c <= QLatin1Char('9');
        if ((i < 2 && !letter) || (i >= 2 && i < 4 && !digit) || (!letter && !digit))
            return false;
    }
    // The country code and check digits go to the end, letters become
    // 10..35, and the remainder is taken digit by digit to stay small.
    const QString rearranged = compact.mid(4) + compact.left(4);
    int remainder = 0;
    for (const QChar c : rearranged) {
        if (c.isDigit()) {
            remainder = (remainder * 10 + (c.unicode() - '0')) % 97;
        } else {
            const int value = c.unicode() - 'A' + 10;
            remainder = (remainder * 100 + value) % 97;
        }
    }
    return remainder == 1;
}

void BankAccount::copy(BankAccount* target) const
{
    *target = *this;
}

QString BankAccount::ibanToBban(const QString& iban)
{
    if (iban.size() != 18)
        return iban;
    return iban.mid(4);
}

QString BankAccount::formatIban(const QString& iban)
{
    QString compact = iban;
    compact.remove(QLatin1Char(' '));
    QString result;
    for (qsizetype i = 0; i < compact.size(); i += 4) {
        if (i > 0)
            result += QLatin1Char(' ');
        result += compact.mid(i, 4);
    }
    return result;
}

QString BankAccount::formatBban(const QString& bban)
{
    // The 14-digit machine form is the printed account number with zeros
    // inserted to fill it up. The printed form is the bank's six digits, a
    // hyphen and the rest without those zeros. In most bank groups (first
    // digit 1, 2, 3, 6, 8, 9, and the unused 0 and 7) the zeros follow the
    // six-digit bank part: 123456-785 is 12345600000785. The savings and
    // cooperative banks (groups 4 and 5) insert them after the seventh digit
    // instead: 423456-781 is 42345670000081. The part after the hyphen keeps
    // at least one digit after its padding is removed.
    QString compact = bban;
    compact.remove(QLatin1Char(' '));
    compact.remove(QLatin1Char('-'));
    if (compact.size() != 14)
        return bban;
    for (const QChar c : compact) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return bban;
    }
    const bool zerosAfterSeventh
        = compact.at(0) == QLatin1Char('4') || compact.at(0) == QLatin1Char('5');
    const int fixedDigits = zerosAfterSeventh ? 7 : 6;
    QString rest = compact.mid(fixedDigits);
    const qsizetype minimum = zerosAfterSeventh ? 0 : 1;
    qsizetype zeros = 0;
    while (zeros < rest.size() - minimum && rest.at(zeros) == QLatin1Char('0'))
        ++zeros;
    rest.remove(0, zeros);
    return compact.left(6) + QLatin1Char('-') + compact.mid(6, fixedDigits - 6) + rest;
}
