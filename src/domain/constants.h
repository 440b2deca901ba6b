#ifndef CONSTANTS_H
#define CONSTANTS_H

#include <QtGlobal>

// Scales of every stored number. No floating-point value is ever stored:
// unit prices and quantities are in 1/10000, totals in cents and
// percentages in 1/100 % (24 % is 2400).
namespace Constants {
constexpr int amountScale = 10000;
constexpr int amountFractionDigits = 4;
constexpr int amountMinFractionDigits = 2;
constexpr int quantityScale = 10000;
constexpr int quantityFractionDigits = 4;
constexpr int quantityMinFractionDigits = 0;
constexpr int totalAmountScale = 100;
constexpr int totalAmountFractionDigits = 2;
constexpr int totalAmountMinFractionDigits = 2;
constexpr int percentageScale = 100;
constexpr int percentageFractionDigits = 2;
constexpr int percentageMinFractionDigits = 0;
constexpr qint64 maxTotalAmount = Q_INT64_C(9999999999);
// The general VAT rate in Finland, 25,5 %.
constexpr int generalVatRate = 2550;
} // namespace Constants

#endif // CONSTANTS_H
