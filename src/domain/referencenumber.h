#ifndef REFERENCENUMBER_H
#define REFERENCENUMBER_H

#include <QString>

// Checks and builds the payment references a user types: Finnish national
// references (a base of digits and its 7-3-1 check digit) and ISO 11649 RF
// creditor references. Spaces are ignored and letters may be of either case.
class ReferenceNumber
{
public:
    // Without spaces, in upper case.
    static QString compact(const QString& text);
    // A national reference of 4 to 20 digits whose check digit is right, or
    // an RF reference of 5 to 25 characters whose check digits match.
    static bool isValid(const QString& reference);
    // The base with its check digit; empty unless the base is 1 to 19 digits.
    static QString national(const QString& base);
    // The RF form of national(base); empty when that is.
    static QString rf(const QString& base);
};

#endif // REFERENCENUMBER_H
