#include "productlistprintmodel.h"

#include "core/registry.h"
#include "csvwriter.h"
#include "domain/decimal.h"
#include "domain/product.h"
#include "domain/vat.h"
#include "listreportformat.h"

#include <algorithm>

namespace {

// A unit price with no more fraction digits than it needs, at least two.
QVariant price(long long amount)
{
    if (amount % 100 == 0)
        return Decimal(amount / 100, 2).toVariant();
    return Decimal(amount, 4).toVariant();
}

} // namespace

ProductListPrintModel::ProductListPrintModel(Registry* registry, QObject* parent)
    : ListPrintModel(registry, QStringLiteral("products"), {}, QString(), NumberColumn, parent)
{
}

ProductListPrintModel::~ProductListPrintModel()
{
    clear();
}

QString ProductListPrintModel::title() const
{
    return tr("Tuoteluettelo");
}

void ProductListPrintModel::clear()
{
    qDeleteAll(m_products);
    m_products.clear();
}

long long ProductListPrintModel::amountVatIncluded(const Product* product)
{
    if (!product->vatExcluded)
        return product->amount;
    return Vat::roundWithSamePrecision(
        Vat::addVat(product->amount, product->vatRate), product->amount);
}

long long ProductListPrintModel::amountVatExcluded(const Product* product)
{
    if (product->vatExcluded)
        return product->amount;
    return Vat::roundWithSamePrecision(
        Vat::substractVat(product->amount, product->vatRate), product->amount);
}

bool ProductListPrintModel::run()
{
    clear();
    m_lastError.clear();
    if (!m_registry) {
        m_lastError = tr("Tietokantaa ei ole avattu");
        return false;
    }
    m_registry->copyProducts(m_products);
    sort(m_sortColumn);
    return true;
}

void ProductListPrintModel::sort(int column)
{
    if (column < 0 || column >= ColumnCount)
        column = NumberColumn;
    m_sortColumn = column;
    const QCollator collator = ListReportFormat::collator();
    auto compareProducts = [&](const Product* a, const Product* b) -> int {
        switch (column) {
        case NameColumn:
            return collator.compare(a->name, b->name);
        case UnitCodeColumn:
            return collator.compare(a->unitCode, b->unitCode);
        case AmountVatExcludedColumn:
            return compare(amountVatExcluded(a), amountVatExcluded(b));
        case AmountColumn:
            return compare(amountVatIncluded(a), amountVatIncluded(b));
        case VatRateColumn:
            return compare(a->vatRate, b->vatRate);
        case CategoryColumn:
            return collator.compare(a->category, b->category);
        default:
            return 0;
        }
    };
    std::stable_sort(m_products.begin(), m_products.end(), [&](const Product* a, const Product* b) {
        const int result = compareProducts(a, b);
        if (result != 0)
            return result < 0;
        // Product numbers are texts: "9" before "10".
        return collator.compare(a->number, b->number) < 0;
    });
}

QVariant ProductListPrintModel::rowValue(int row, const QStringList& path) const
{
    if (path.size() != 3)
        return QVariant();
    const Product* product = m_products.at(row);
    const QString& key = path.at(2);
    if (key == QLatin1String("number"))
        return product->number;
    if (key == QLatin1String("name"))
        return product->name;
    if (key == QLatin1String("unitCode"))
        return product->unitCode;
    if (key == QLatin1String("amount"))
        return price(amountVatIncluded(product));
    if (key == QLatin1String("amountVatExcluded"))
        return price(amountVatExcluded(product));
    if (key == QLatin1String("vatRate"))
        return Decimal(product->vatRate, 2).toVariant();
    if (key == QLatin1String("category"))
        return product->category;
    return QVariant();
}

bool ProductListPrintModel::exportToCSV(const QString& fileName, const QString& format)
{
    CsvWriter csv(format);
    csv.addRow({ tr("Nro"), tr("Nimi"), tr("Yksikkö"), tr("Veroton"), tr("Verollinen"), tr("ALV-%"),
        tr("Tuoteryhmä") });
    for (const Product* product : std::as_const(m_products)) {
        // A product number like "-5" or "=A1" is text, not a number.
        csv.addText(product->number);
        csv.addText(product->name);
        csv.addText(product->unitCode);
        csv.addNumber(ListReportFormat::number(amountVatExcluded(product), 4, 2));
        csv.addNumber(ListReportFormat::number(amountVatIncluded(product), 4, 2));
        csv.addNumber(ListReportFormat::number(product->vatRate, 2, 0));
        csv.addText(product->category);
        csv.endRow();
    }
    return ListReportFormat::save(csv, fileName, &m_lastError);
}
