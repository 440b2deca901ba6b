#ifndef PRINTSCRIPTENGINEBASE_H
#define PRINTSCRIPTENGINEBASE_H

#include "domain/decimalformat.h"
#include "util/ecmascriptengine.h"

class PrintModel;

// The data and formatting functions that print scripts and XML scripts share:
// get(path) reads the model, the format functions turn the model's scaled
// integers and dates into text in the chosen locale.
class PrintScriptEngineBase : public ECMAScriptEngine
{
    Q_OBJECT
public:
    explicit PrintScriptEngineBase(QObject* parent = nullptr);

    PrintModel* model() const { return m_model; }
    void setModel(PrintModel* model) { m_model = model; }
    bool grouping() const { return m_grouping; }
    void setGrouping(bool grouping) { m_grouping = grouping; }

public slots:
    void initialize() override;

    int envGet();
    int envFormatCurrency();
    int envFormatNumber();
    int envFormatDate();
    int envCurrentDate();
    int envCurrentDateTime();
    int envGetDateTime();
    int envGetNumber();
    int envGetCurrency();
    int envSetLocale();

protected:
    // getNumber(path, minFractionDigits, grouping) as text; empty for an
    // invalid value.
    QString formatModelNumber(const QString& path, int minFractionDigits, bool grouping);

    PrintModel* m_model = nullptr;
    DecimalFormat m_currencyFormat;
    DecimalFormat m_numberFormat;
    bool m_grouping = true;
};

#endif // PRINTSCRIPTENGINEBASE_H
