#ifndef PRINTMODEL_H
#define PRINTMODEL_H

#include <QImage>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>

class Customer;
class Registry;

// The data source of a print script. Scripts ask for values by paths such
// as "invoices/0/number"; the path is split at "/" (empty parts kept) and
// handed to the subclass.
class PrintModel : public QObject
{
    Q_OBJECT
public:
    explicit PrintModel(QObject* parent = nullptr);

    // Gathers the data; false with lastError() on failure.
    virtual bool run();
    virtual QString title() const = 0;
    virtual QString lastError() const;
    virtual QVariant value(const QString& path);
    virtual QImage image(const QString& path);
    // Writes the model as CSV; format is the field delimiter ("," or ";"),
    // see csvFormatToDelimiter().
    virtual bool exportToCSV(const QString& fileName, const QString& format) = 0;
    // Unknown paths give an invalid QVariant.
    virtual QVariant value(QStringList& path) = 0;
    virtual QImage image(QStringList& path);

    // The delimiter of the CSV choices of the save dialog: 0 comma, 1 semicolon.
    static QString csvFormatToDelimiter(int format);

protected:
    // Cents as a Decimal, the scale of totals and balances.
    static QVariant money(long long cents);
    // The registry's customer of that id; null when there is none.
    static const Customer* customerById(const Registry* registry, int id);
    // The customer's "number", "name", "streetName", "postCode", "townName"
    // and "country"; invalid for any other key.
    static QVariant addressValue(const Customer& customer, const QString& key);

    QString m_lastError;
};

#endif // PRINTMODEL_H
