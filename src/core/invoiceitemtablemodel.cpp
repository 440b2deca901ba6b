#include "invoiceitemtablemodel.h"

#include "core/registry.h"
#include "domain/constants.h"
#include "domain/invoiceitem.h"
#include "domain/product.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "domain/vat.h"
#include "storage/query.h"

#include <QStringList>

#include <algorithm>

namespace {

DecimalFormat makeFormat(int fractionDigits, int minFractionDigits, bool grouping)
{
    DecimalFormat format(fractionDigits, minFractionDigits);
    format.setGrouping(grouping);
    return format;
}

// quantity * price / quantity scale without overflowing on the way.
long long rowTotal(long long quantity, long long price)
{
    const __int128 total = static_cast<__int128>(quantity) * price / Constants::quantityScale;
    if (total > Constants::maxTotalAmount * 1000)
        return Constants::maxTotalAmount * 1000;
    if (total < -Constants::maxTotalAmount * 1000)
        return -Constants::maxTotalAmount * 1000;
    return static_cast<long long>(total);
}

bool exceedsLimit(long long value)
{
    return value > Constants::maxTotalAmount || value < -Constants::maxTotalAmount;
}

// Quantities and prices are read in 32 bits, below the limit of amounts.
constexpr long long maxEnteredValue
    = qMin(DecimalFormat::maxParsedValue, Constants::maxTotalAmount);
// The row total limit is in the scale of unit prices; it is shown in cents.
constexpr long long maxTotalInCents
    = Constants::maxTotalAmount / (Constants::amountScale / Constants::totalAmountScale);
constexpr long long maxDiscount = 100 * Constants::percentageScale;

} // namespace

InvoiceItemTableModel::InvoiceItemTableModel(Registry* registry, QObject* parent)
    : QAbstractTableModel(parent)
    , m_registry(registry)
    , m_amountDisplayFormat(
          makeFormat(Constants::amountFractionDigits, Constants::amountMinFractionDigits, true))
    , m_amountEditFormat(
          makeFormat(Constants::amountFractionDigits, Constants::amountMinFractionDigits, false))
    , m_totalFormat(makeFormat(
          Constants::totalAmountFractionDigits, Constants::totalAmountMinFractionDigits, true))
    , m_quantityDisplayFormat(
          makeFormat(Constants::quantityFractionDigits, Constants::quantityMinFractionDigits, true))
    , m_quantityEditFormat(makeFormat(
          Constants::quantityFractionDigits, Constants::quantityMinFractionDigits, false))
    , m_percentageDisplayFormat(makeFormat(
          Constants::percentageFractionDigits, Constants::percentageMinFractionDigits, true))
    , m_percentageEditFormat(makeFormat(
          Constants::percentageFractionDigits, Constants::percentageMinFractionDigits, false))
{
}

InvoiceItemTableModel::~InvoiceItemTableModel()
{
    qDeleteAll(m_items);
}

int InvoiceItemTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_items.size();
}

int InvoiceItemTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

long long InvoiceItemTableModel::shownPrice(const InvoiceItem* item) const
{
    return m_vatIncluded ? item->amountVatIncluded() : item->amountVatExcluded();
}

void InvoiceItemTableModel::setShownPrice(InvoiceItem* item, long long price) const
{
    if (m_vatIncluded)
        item->setAmountVatIncluded(price);
    else
        item->setAmountVatExcluded(price);
}

QVariant InvoiceItemTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || !isValidRow(index.row()) || index.column() >= ColumnCount)
        return QVariant();
    const InvoiceItem* item = m_items.at(index.row());
    const int column = index.column();

    if (role == Qt::TextAlignmentRole) {
        if (column == ProductColumn || column == TextColumn || column == UnitColumn)
            return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    }

    if (role == Qt::DisplayRole) {
        switch (column) {
        case ProductColumn:
            if (item->productNumber.isEmpty() && item->productName.isEmpty())
                return QString();
            return QStringLiteral("%1 %2").arg(item->productNumber, item->productName);
        case TextColumn:
            return item->text;
        case QuantityColumn:
            return m_quantityDisplayFormat.format(item->quantity);
        case UnitColumn:
            return item->unitCode;
        case PriceColumn:
            return m_amountDisplayFormat.format(shownPrice(item));
        case DiscountColumn:
            return m_percentageDisplayFormat.format(item->discount);
        case DiscountedPriceColumn:
            return m_amountDisplayFormat.format(
                m_vatIncluded ? item->unitAmountVatIncluded() : item->unitAmountVatExcluded());
        case VatColumn:
            return m_percentageDisplayFormat.format(item->vatRate);
        case TotalColumn:
            return m_totalFormat.format(
                m_vatIncluded ? item->totalAmountVatIncluded() : item->totalAmountVatExcluded());
        }
    } else if (role == Qt::EditRole) {
        switch (column) {
        case ProductColumn:
            return item->productNumber;
        case TextColumn:
            return item->text;
        case QuantityColumn:
            return m_quantityEditFormat.format(item->quantity);
        case UnitColumn:
            return item->unitCode;
        case PriceColumn:
            return m_amountEditFormat.format(shownPrice(item));
        case DiscountColumn:
            return m_percentageEditFormat.format(item->discount);
        default:
            break;
        }
    }
    return QVariant();
}

QVariant InvoiceItemTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case ProductColumn:
        return tr("Tuote");
    case TextColumn:
        return tr("Selite");
    case QuantityColumn:
        return tr("Määrä");
    case UnitColumn:
        return tr("Yksikkö");
    case PriceColumn:
        return m_vatIncluded ? tr("à-hinta, ALV") : tr("à-hinta, ei ALV");
    case DiscountColumn:
        return tr("Alennus-%");
    case DiscountedPriceColumn:
        return tr("Alennettu à-hinta");
    case VatColumn:
        return tr("ALV-%");
    case TotalColumn:
        return tr("Yhteensä");
    default:
        return QVariant();
    }
}

Qt::ItemFlags InvoiceItemTableModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags result = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    if (m_editable && index.column() <= DiscountColumn)
        result |= Qt::ItemIsEditable;
    return result;
}

bool InvoiceItemTableModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::EditRole || !index.isValid() || !isValidRow(index.row()) || !m_editable)
        return false;
    const int row = index.row();
    InvoiceItem* item = m_items.at(row);
    const QString text = value.toString().trimmed();

    switch (index.column()) {
    case ProductColumn: {
        bool found = false;
        const Product* product
            = text.isEmpty() ? nullptr : m_registry->productByNumber(text, found);
        setProduct(row, found ? product : nullptr);
        return true;
    }
    case TextColumn:
        item->text = text;
        emitRowChanged(row, TextColumn, TextColumn);
        break;
    case QuantityColumn: {
        DecimalFormat::ParseStatus status = DecimalFormat::ParseStatus::Invalid;
        const long long quantity = m_quantityEditFormat.parse(text, status);
        if (status == DecimalFormat::ParseStatus::Invalid)
            return false;
        if (status == DecimalFormat::ParseStatus::TooLarge || exceedsLimit(quantity)) {
            return refuseTooLarge(row,
                tr("Määrä on liian suuri. Suurin sallittu määrä on %1.")
                    .arg(m_quantityDisplayFormat.format(maxEnteredValue)));
        }
        if (exceedsLimit(rowTotal(quantity, item->amountVatIncluded()))) {
            return refuseTooLarge(row,
                tr("Rivin summa on liian suuri. Suurin sallittu summa on %1.")
                    .arg(m_totalFormat.format(maxTotalInCents)));
        }
        item->quantity = quantity;
        emitRowChanged(row, QuantityColumn);
        break;
    }
    case UnitColumn:
        item->unitCode = text;
        emitRowChanged(row, UnitColumn, UnitColumn);
        break;
    case PriceColumn: {
        DecimalFormat::ParseStatus status = DecimalFormat::ParseStatus::Invalid;
        const long long price = m_amountEditFormat.parse(text, status);
        if (status == DecimalFormat::ParseStatus::Invalid)
            return false;
        if (status == DecimalFormat::ParseStatus::TooLarge || exceedsLimit(price)) {
            return refuseTooLarge(row,
                tr("À-hinta on liian suuri. Suurin sallittu à-hinta on %1.")
                    .arg(m_amountDisplayFormat.format(maxEnteredValue)));
        }
        if (price == shownPrice(item))
            return false;
        long long total = rowTotal(item->quantity, price);
        if (!m_vatIncluded)
            total = Vat::addVat(total, item->vatRate);
        if (exceedsLimit(total)) {
            return refuseTooLarge(row,
                tr("Rivin summa on liian suuri. Suurin sallittu summa on %1.")
                    .arg(m_totalFormat.format(maxTotalInCents)));
        }
        setShownPrice(item, price);
        emitRowChanged(row, PriceColumn);
        break;
    }
    case DiscountColumn: {
        long long discount = 0;
        if (!text.isEmpty()) {
            DecimalFormat::ParseStatus status = DecimalFormat::ParseStatus::Invalid;
            discount = m_percentageEditFormat.parse(text, status);
            if (status == DecimalFormat::ParseStatus::Invalid)
                return false;
            if (status == DecimalFormat::ParseStatus::TooLarge) {
                return refuseTooLarge(row,
                    tr("Alennus on liian suuri. Suurin sallittu alennus on %1 %.")
                        .arg(m_percentageDisplayFormat.format(maxDiscount)));
            }
        }
        item->discount = static_cast<int>(std::clamp<long long>(discount, 0, maxDiscount));
        emitRowChanged(row, DiscountColumn);
        break;
    }
    default:
        return false;
    }
    m_changed = true;
    return true;
}

bool InvoiceItemTableModel::refuseTooLarge(int row, const QString& error)
{
    m_lastError = error;
    emit tooLargeAmountEntered(row);
    return false;
}

bool InvoiceItemTableModel::insertRows(int row, int count, const QModelIndex& parent)
{
    if (parent.isValid() || row < 0 || row > m_items.size() || count < 1)
        return false;
    beginInsertRows(QModelIndex(), row, row + count - 1);
    for (int i = 0; i < count; ++i)
        m_items.insert(row + i, new InvoiceItem());
    endInsertRows();
    m_changed = true;
    return true;
}

bool InvoiceItemTableModel::removeRows(int row, int count, const QModelIndex& parent)
{
    if (parent.isValid() || row < 0 || count < 1 || row + count > m_items.size())
        return false;
    beginRemoveRows(QModelIndex(), row, row + count - 1);
    for (int i = 0; i < count; ++i) {
        InvoiceItem* item = m_items.takeAt(row);
        m_rowChanges.removed(item);
        delete item;
    }
    endRemoveRows();
    m_changed = true;
    return true;
}

bool InvoiceItemTableModel::insertRow(int row)
{
    return insertRows(row, 1);
}

bool InvoiceItemTableModel::removeRow(int row)
{
    return removeRows(row, 1);
}

bool InvoiceItemTableModel::moveRow(int from, int to)
{
    if (!isValidRow(from) || to < 0 || to >= m_items.size())
        return false;
    beginRemoveRows(QModelIndex(), from, from);
    InvoiceItem* item = m_items.takeAt(from);
    endRemoveRows();
    beginInsertRows(QModelIndex(), to, to);
    m_items.insert(to, item);
    endInsertRows();
    m_changed = true;
    return true;
}

void InvoiceItemTableModel::removeEmptyRows()
{
    for (int row = m_items.size() - 1; row >= 0; --row) {
        const InvoiceItem* item = m_items.at(row);
        if (item->productNumber.isEmpty() && item->text.isEmpty() && item->amountVatIncluded() == 0)
            removeRow(row);
    }
}

bool InvoiceItemTableModel::toInvoiceItem(int row, InvoiceItem* item) const
{
    if (!isValidRow(row) || !item)
        return false;
    m_items.at(row)->copy(item);
    return true;
}

const InvoiceItem* InvoiceItemTableModel::invoiceItemAt(int row) const
{
    return isValidRow(row) ? m_items.at(row) : nullptr;
}

long long InvoiceItemTableModel::totalAmountVatIncluded() const
{
    long long total = 0;
    for (const InvoiceItem* item : m_items)
        total += item->totalAmountVatIncluded();
    return total;
}

long long InvoiceItemTableModel::totalAmountVatExcluded() const
{
    long long total = 0;
    for (const InvoiceItem* item : m_items)
        total += item->totalAmountVatExcluded();
    return total;
}

long long InvoiceItemTableModel::totalVatAmount() const
{
    Vat vat;
    const Settings* settings = m_registry ? m_registry->settings() : nullptr;
    if (settings)
        vat.setRoundingMode(settings->property(SettingsKeys::roundingMode).toInt());
    for (const InvoiceItem* item : m_items)
        vat.addInvoiceItem(item);
    return vat.totalVatAmount();
}

int InvoiceItemTableModel::emptyProduct() const
{
    for (int row = 0; row < m_items.size(); ++row) {
        if (m_items.at(row)->productNumber.isEmpty() && m_items.at(row)->productName.isEmpty())
            return row;
    }
    return -1;
}

void InvoiceItemTableModel::fillFromProduct(InvoiceItem* item, const Product* product) const
{
    if (product) {
        product->toInvoiceItem(item);
    } else {
        item->productNumber.clear();
        item->productName.clear();
    }
    if (m_vatFree)
        item->vatRate = 0;
}

void InvoiceItemTableModel::setProduct(int row, const Product* product)
{
    if (!isValidRow(row))
        return;
    fillFromProduct(m_items.at(row), product);
    m_changed = true;
    // Price, VAT rate and totals follow the product as well.
    emitRowChanged(row);
}

void InvoiceItemTableModel::setText(int row, const QString& text)
{
    if (!isValidRow(row))
        return;
    m_items.at(row)->text = text;
    m_changed = true;
    emitRowChanged(row, TextColumn, TextColumn);
}

void InvoiceItemTableModel::setQuantity(int row, long long quantity)
{
    if (!isValidRow(row))
        return;
    m_items.at(row)->quantity = quantity;
    m_changed = true;
    emitRowChanged(row, QuantityColumn);
}

void InvoiceItemTableModel::setQuantityAndAmountAndVat0(
    int row, long long quantity, long long amount)
{
    if (!isValidRow(row))
        return;
    InvoiceItem* item = m_items.at(row);
    item->quantity = quantity;
    item->amount = amount;
    item->vatRate = 0;
    m_changed = true;
    emitRowChanged(row, QuantityColumn);
}

void InvoiceItemTableModel::fromInvoiceItem(const InvoiceItem* item)
{
    if (!item)
        return;
    auto* copy = new InvoiceItem();
    item->copy(copy);
    // A copy belongs to this invoice: saving must insert it, never move the
    // original row over.
    copy->id = -1;
    copy->invoiceId = -1;
    const int row = m_items.size();
    beginInsertRows(QModelIndex(), row, row);
    m_items.append(copy);
    endInsertRows();
    m_changed = true;
}

void InvoiceItemTableModel::addVatToInvoiceItems()
{
    for (InvoiceItem* item : qAsConst(m_items)) {
        bool found = false;
        const Product* product = item->productNumber.isEmpty()
            ? nullptr
            : m_registry->productByNumber(item->productNumber, found);
        if (found && product)
            item->vatRate = product->vatRate;
    }
    m_changed = true;
    if (!m_items.isEmpty())
        emit dataChanged(index(0, 0), index(m_items.size() - 1, TotalColumn));
}

void InvoiceItemTableModel::removeVatFromInvoiceItems()
{
    for (InvoiceItem* item : qAsConst(m_items))
        item->vatRate = 0;
    m_changed = true;
    if (!m_items.isEmpty())
        emit dataChanged(index(0, 0), index(m_items.size() - 1, TotalColumn));
}

void InvoiceItemTableModel::setVatIncluded(bool vatIncluded)
{
    m_vatIncluded = vatIncluded;
    if (!m_items.isEmpty())
        emit dataChanged(index(0, PriceColumn), index(m_items.size() - 1, TotalColumn));
    emit headerDataChanged(Qt::Horizontal, PriceColumn, PriceColumn);
}

void InvoiceItemTableModel::setVatFree(bool vatFree)
{
    m_vatFree = vatFree;
}

void InvoiceItemTableModel::setEditable(bool editable)
{
    m_editable = editable;
}

bool InvoiceItemTableModel::loadInvoiceItems(Query* query, int invoiceId)
{
    if (!query->fetchInvoiceItems(invoiceId))
        return false;
    QList<InvoiceItem*> items;
    while (query->next()) {
        auto* item = new InvoiceItem();
        query->invoiceItem(item);
        items.append(item);
    }
    clearInvoiceItems();
    if (!items.isEmpty()) {
        beginInsertRows(QModelIndex(), 0, items.size() - 1);
        m_items = items;
        endInsertRows();
    }
    return true;
}

bool InvoiceItemTableModel::saveInvoiceItems(Query* query, int invoiceId)
{
    if (!m_changed)
        return true;
    return m_rowChanges.save(
        m_items, [query](int id) { return query->deleteInvoiceItem(id); },
        [query, invoiceId](InvoiceItem* item, int row) {
            item->invoiceId = invoiceId;
            item->rowNumber = row;
            return query->saveInvoiceItem(item);
        });
}

void InvoiceItemTableModel::committed()
{
    m_rowChanges.clear();
    m_changed = false;
}

void InvoiceItemTableModel::rolledBack()
{
    m_rowChanges.rolledBack();
}

void InvoiceItemTableModel::clearInvoiceItems()
{
    if (!m_items.isEmpty()) {
        beginRemoveRows(QModelIndex(), 0, m_items.size() - 1);
        qDeleteAll(m_items);
        m_items.clear();
        endRemoveRows();
    }
    m_rowChanges.clear();
    m_changed = false;
}

void InvoiceItemTableModel::deleteInvoiceItems()
{
    if (!m_items.isEmpty())
        removeRows(0, m_items.size());
}

void InvoiceItemTableModel::invoiceItemToString(int row, QString& out) const
{
    if (!isValidRow(row))
        return;
    const InvoiceItem* item = m_items.at(row);
    const QStringList fields = { item->productNumber, item->productName, item->text,
        m_quantityEditFormat.format(item->quantity), item->unitCode,
        m_amountEditFormat.format(shownPrice(item)), m_percentageEditFormat.format(item->discount),
        m_amountEditFormat.format(
            m_vatIncluded ? item->totalAmountVatIncluded() : item->totalAmountVatExcluded()) };
    out += fields.join(QLatin1Char('\t'));
    out += QLatin1Char('\n');
}

int InvoiceItemTableModel::invoiceItemsFromString(const QString& text)
{
    int added = 0;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        const QStringList fields = line.split(QLatin1Char('\t'));
        if (fields.size() < 7)
            continue;
        auto* item = new InvoiceItem();
        bool found = false;
        const Product* product
            = fields.at(0).isEmpty() ? nullptr : m_registry->productByNumber(fields.at(0), found);
        fillFromProduct(item, found ? product : nullptr);
        item->text = fields.at(2);
        bool ok = false;
        item->quantity = m_quantityEditFormat.parse(fields.at(3), ok);
        item->unitCode = fields.at(4);
        setShownPrice(item, m_amountEditFormat.parse(fields.at(5), ok));
        if (m_vatFree)
            item->vatRate = 0;
        item->discount = static_cast<int>(m_percentageEditFormat.parse(fields.at(6), ok));

        const int row = m_items.size();
        beginInsertRows(QModelIndex(), row, row);
        m_items.append(item);
        endInsertRows();
        ++added;
    }
    if (added > 0)
        m_changed = true;
    return added;
}

void InvoiceItemTableModel::emitRowChanged(int row, int firstColumn, int lastColumn)
{
    emit dataChanged(index(row, firstColumn), index(row, lastColumn));
}
